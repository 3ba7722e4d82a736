// The exceptions of the framework. All derive from vek::Exception, which is a std::exception.
//
// The thrower chooses the class. An exception stores its error number at construction; the text is
// looked up when it is first needed. A copy includes the causes, so that an exception can be kept
// (`clone`) and thrown again (`raise`) with its full type.
//
// Constructors take error numbers of GetLastError or WSAGetLastError, and throw nothing but
// std::bad_alloc. Exceptions of a single class, such as vek::PathInfo::Error and
// vek::SharedLibError, are declared in the header of that class.
//
// Not thread-safe: both texts are cached at the first call, also by const operations.
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

    // Returns the descriptions of this exception and of its causes, joined by ": ". The pointer is
    // valid as long as the object lives.
    const char* what() const noexcept override;

    // Throws a copy of this object, of its most derived class.
    [[noreturn]] virtual void raise() const = 0;

    // Returns a heap copy of the most derived class, owned by the caller; null if the allocation
    // fails.
    virtual Exception* clone() const = 0;

    // Returns this exception's own text, without its causes.
    virtual std::string description() const;

    // Returns the exception that caused this one, or null. Owned by this object.
    const Exception* getCause() const { return cause.get(); }

    // Returns the descriptions of this exception and of its causes, each followed by a line end.
    std::string printableText() const;

  protected:
    Exception() = default;
    explicit Exception(std::string ownText);
    Exception(std::string ownText, const Exception& causedBy);

    std::string chainText(const char* separator) const;  // all descriptions, joined by it

    std::unique_ptr<Exception> cause;
    mutable std::string text;

  private:
    mutable std::string whatText;
    mutable std::string fullText;
};

// Implements `raise` and `clone` of `Derived`: class X : public ExceptionOf<X, Base>.
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
    // `errorNumber` is the result of GetLastError.
    explicit OsError(std::uint32_t errorNumber) : errorCode(errorNumber) {}

    std::uint32_t code() const { return errorCode; }  // the error number
    std::string description() const override;

  private:
    std::uint32_t errorCode;
};

// A failed socket call. `errorNumber` is the result of WSAGetLastError.
class NetError : public ExceptionOf<NetError, OsError> {
  public:
    explicit NetError(std::uint32_t errorNumber) : ExceptionOf(errorNumber) {}
};

// This host doesn't have the address. Calls WSAGetLastError itself, like the next two classes:
// construct it before another call changes that number.
class NoSuchAddress : public ExceptionOf<NoSuchAddress, NetError> {
  public:
    NoSuchAddress();
};

// No process listens at the other end.
class NoPeer : public ExceptionOf<NoPeer, NetError> {
  public:
    NoPeer();
};

// The network is down.
class NoNetwork : public ExceptionOf<NoNetwork, NetError> {
  public:
    NoNetwork();
};

// The system denied a permission.
class PermissionError : public ExceptionOf<PermissionError, OsError> {
  public:
    explicit PermissionError(std::uint32_t errorNumber) : ExceptionOf(errorNumber) {}
};

// A call that isn't allowed in this state or with these arguments. "Usage error: " and the message.
class UsageError : public ExceptionOf<UsageError> {
  public:
    explicit UsageError(const std::string& message);
};

// Text that can't be parsed: "Parse error: Couldn't parse '", the input, "': " and the reason.
class ParseError : public ExceptionOf<ParseError> {
  public:
    ParseError(const std::string& unparsedInput, const std::string& reason);

    const std::string& input() const { return inputText; }  // the text, unparsed

  private:
    std::string inputText;
};

// Any other failure. The text is the message alone.
class RuntimeError : public ExceptionOf<RuntimeError> {
  public:
    explicit RuntimeError(const std::string& message);
    RuntimeError(const std::string& message, const Exception& causedBy);
};

// A failed operation on a path: "File system error at location: ", the path in double quotes, ": "
// and the system's text.
class FsError : public ExceptionOf<FsError> {
  public:
    FsError(const std::string& failedPath, std::uint32_t errorNumber);

    const OsError& osError() const { return error; }      // the failed call
    const std::string& path() const { return pathText; }  // as the thrower gave it
    std::string description() const override;

  private:
    OsError error;
    std::string pathText;
};

// The file or one of its parent directories doesn't exist.
class NoSuchFileError : public ExceptionOf<NoSuchFileError, FsError> {
  public:
    NoSuchFileError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The system denied access to the file.
class FileAccessError : public ExceptionOf<FileAccessError, FsError> {
  public:
    FileAccessError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The file exists already.
class FileExistsError : public ExceptionOf<FileExistsError, FsError> {
  public:
    FileExistsError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The two paths are on different volumes.
class NotSameDeviceError : public ExceptionOf<NotSameDeviceError, FsError> {
  public:
    NotSameDeviceError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// The path is a symbolic link. Deliberately never thrown, as this system doesn't know symbolic
// links; vek::fs::Copier catches it.
class IsASymlinkError : public ExceptionOf<IsASymlinkError, FsError> {
  public:
    IsASymlinkError(const std::string& failedPath, std::uint32_t errorNumber)
        : ExceptionOf(failedPath, errorNumber) {}
};

// A failure of the registry. The text is the message alone, or empty.
class RegistryError : public ExceptionOf<RegistryError> {
  public:
    RegistryError() = default;
    explicit RegistryError(const std::string& message) : ExceptionOf(message) {}
};

// A registry value has another type than expected.
class RegistryTypeError : public ExceptionOf<RegistryTypeError, RegistryError> {
  public:
    RegistryTypeError() = default;
    explicit RegistryTypeError(const std::string& message) : ExceptionOf(message) {}
};

// A failed system call on the registry. Deliberately in the reverse order of FsError: the system's
// text first, then, if there is a message, ": " and the message.
class RegistryOsError : public ExceptionOf<RegistryOsError, RegistryError> {
  public:
    RegistryOsError(const std::string& message, std::uint32_t errorNumber)
        : ExceptionOf(message), error(errorNumber) {}

    const OsError& osError() const { return error; }  // the failed call
    std::string description() const override;

  private:
    OsError error;
};

}  // namespace vek
