// The one exception tree of the framework, rooted in vek::Exception, which is a std::exception.
//
// The thrower picks the class. Error numbers are captured when an exception is built; their text is
// looked up when it is asked for. Every class is copied whole, its causes included, so that it can
// be kept (`clone`) and thrown again (`raise`) with its full type.
//
// Constructors take their numbers as GetLastError or WSAGetLastError gave them, and throw nothing
// but std::bad_alloc. A class that belongs to one owner stands with it.
//
// One object is not to be asked for its texts by two threads at once: both texts are cached at the
// first call.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>

namespace vek {

class Exception : public std::exception {
  public:
    Exception(const Exception& other);
    Exception& operator=(const Exception&) = delete;
    ~Exception() override;

    // The descriptions of this exception and of its causes, joined by ": ". The pointer lives as
    // long as the object.
    const char* what() const noexcept override;

    // Throws a copy of this object, of its most derived class.
    [[noreturn]] virtual void raise() const = 0;

    // A heap copy of the most derived class, owned by the caller; null if the allocation gives
    // null.
    virtual Exception* clone() const = 0;

    // This exception's own text, without its causes.
    virtual std::string description() const;

    // The exception that led to this one, or null. Owned by this object.
    const Exception* getCause() const { return cause.get(); }

    // The descriptions of this exception and of its causes, one on each line, with a line end
    // behind the last.
    std::string printableText() const;

  protected:
    Exception() = default;
    explicit Exception(std::string ownText);
    Exception(std::string ownText, const Exception& causedBy);

    std::string chainText(const char* separator) const;

    std::unique_ptr<Exception> cause;
    mutable std::string text;

  private:
    mutable std::string whatText;
    mutable std::string fullText;
};

// Gives `Derived` its `raise` and `clone`: class X : public ExceptionOf<X, Base>.
template <class Derived, class Base = Exception>
class ExceptionOf : public Base {
  public:
    [[noreturn]] void raise() const override { throw static_cast<const Derived&>(*this); }

    Exception* clone() const override {
        return new (std::nothrow) Derived(static_cast<const Derived&>(*this));
    }

  protected:
    using Base::Base;
};

// A failed system call: the system's text, a blank, and the number in parentheses.
class OsError : public ExceptionOf<OsError> {
  public:
    // `errorNumber` is what GetLastError gave.
    explicit OsError(std::uint32_t errorNumber) : errorCode(errorNumber) {}

    std::uint32_t code() const { return errorCode; }
    std::string description() const override;

  private:
    std::uint32_t errorCode;
};

// A failed socket call. `errorNumber` is what WSAGetLastError gave.
class NetError : public ExceptionOf<NetError, OsError> {
  public:
    explicit NetError(std::uint32_t errorNumber) : ExceptionOf(errorNumber) {}
};

// This host doesn't have the address. Takes WSAGetLastError() by itself, so it is to be built
// before anything else touches that number; so are the next two.
class NoSuchAddress : public ExceptionOf<NoSuchAddress, NetError> {
  public:
    NoSuchAddress();
};

// Nobody listens at the other end.
class NoPeer : public ExceptionOf<NoPeer, NetError> {
  public:
    NoPeer();
};

// The network is down.
class NoNetwork : public ExceptionOf<NoNetwork, NetError> {
  public:
    NoNetwork();
};

// The system refused a right.
class PermissionError : public ExceptionOf<PermissionError, OsError> {
  public:
    explicit PermissionError(std::uint32_t errorNumber) : ExceptionOf(errorNumber) {}
};

// A call that the caller was not allowed to make. "Usage error: " and the message.
class UsageError : public ExceptionOf<UsageError> {
  public:
    explicit UsageError(const std::string& message);
};

// Text that can't be understood: "Parse error: Couldn't parse '", the input, "': " and the reason.
class ParseError : public ExceptionOf<ParseError> {
  public:
    ParseError(const std::string& unparsedInput, const std::string& reason);

    const std::string& input() const { return inputText; }

  private:
    std::string inputText;
};

// Anything else, told by its message alone.
class RuntimeError : public ExceptionOf<RuntimeError> {
  public:
    explicit RuntimeError(const std::string& message);
    RuntimeError(const std::string& message, const Exception& causedBy);
};

// A failure that concerns a path: "File system error at location: ", the path in double quotes, ":
// " and the system's text.
class FsError : public ExceptionOf<FsError> {
  public:
    FsError(const std::string& failedPath, std::uint32_t errorNumber);

    const OsError& osError() const { return error; }
    const std::string& path() const { return pathText; }
    std::string description() const override;

  private:
    OsError error;
    std::string pathText;
};

// The file or a directory on the way to it doesn't exist.
class NoSuchFileError : public ExceptionOf<NoSuchFileError, FsError> {
  public:
    NoSuchFileError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The system refused access to the file.
class FileAccessError : public ExceptionOf<FileAccessError, FsError> {
  public:
    FileAccessError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The file exists, and it was to be a new one.
class FileExistsError : public ExceptionOf<FileExistsError, FsError> {
  public:
    FileExistsError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The two paths stand on different volumes.
class NotSameDeviceError : public ExceptionOf<NotSameDeviceError, FsError> {
  public:
    NotSameDeviceError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The path is a symbolic link where none is followed. Known to who copies files; nothing throws it,
// deliberately, as symbolic links don't exist for this system.
class IsASymlinkError : public ExceptionOf<IsASymlinkError, FsError> {
  public:
    IsASymlinkError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// A failure of the registry, told by its message alone, or by nothing.
class RegistryError : public ExceptionOf<RegistryError> {
  public:
    RegistryError() = default;
    explicit RegistryError(const std::string& message) : ExceptionOf(message) {}
};

// A value of the registry is of another type than the one asked for.
class RegistryTypeError : public ExceptionOf<RegistryTypeError, RegistryError> {
  public:
    RegistryTypeError() = default;
    explicit RegistryTypeError(const std::string& message) : ExceptionOf(message) {}
};

// A failed system call on the registry. The order is the reverse of FsError's, deliberately: the
// system's text first, then, if there is a message, ": " and the message.
class RegistryOsError : public ExceptionOf<RegistryOsError, RegistryError> {
  public:
    RegistryOsError(const std::string& message, std::uint32_t errorNumber)
        : ExceptionOf(message), error(errorNumber) {}

    const OsError& osError() const { return error; }
    std::string description() const override;

  private:
    OsError error;
};

}  // namespace vek
