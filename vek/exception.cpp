#include "vek/exception.h"

#include <utility>

#include "vek/base/os_error_text.h"

namespace vek {

Exception::Exception(std::string ownText) : text(std::move(ownText)) {}

Exception::Exception(std::string ownText, const Exception& causedBy)
    : cause(causedBy.clone()), text(std::move(ownText)) {}

Exception::Exception(const Exception& other)
    : std::exception(other),
      cause(other.cause ? other.cause->clone() : nullptr),
      text(other.text),
      whatText(other.whatText),
      fullText(other.fullText) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    if (whatText.empty()) {
        whatText = chainText(": ");
    }
    return whatText.c_str();
}

std::string Exception::printableText() const {
    if (fullText.empty()) {
        fullText = chainText("\n") + "\n";
    }
    return fullText;
}

std::string Exception::description() const {
    return text;
}

std::string Exception::chainText(const char* separator) const {
    std::string result = description();
    for (const Exception* next = cause.get(); next != nullptr; next = next->cause.get()) {
        result += separator;
        result += next->description();
    }
    return result;
}

std::string OsError::description() const {
    return osErrorText(errorCode) + " (" + std::to_string(errorCode) + ")";
}

UsageError::UsageError(const std::string& message) : ExceptionOf("Usage error: " + message) {}

ParseError::ParseError(const std::string& unparsedInput, const std::string& reason)
    : ExceptionOf("Parse error: Couldn't parse '" + unparsedInput + "': " + reason),
      inputText(unparsedInput) {}

RuntimeError::RuntimeError(const std::string& message) : ExceptionOf(message) {}

RuntimeError::RuntimeError(const std::string& message, const Exception& causedBy)
    : ExceptionOf(message, causedBy) {}

FsError::FsError(const std::string& failedPath, std::uint32_t errorNumber)
    : ExceptionOf("File system error at location: \"" + failedPath + "\""),
      error(errorNumber),
      pathText(failedPath) {}

std::string FsError::description() const {
    return text.empty() ? error.description() : text + ": " + error.description();
}

std::string RegistryOsError::description() const {
    return text.empty() ? error.description() : error.description() + ": " + text;
}

}  // namespace vek
