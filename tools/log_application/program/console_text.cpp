#include "tools/log_application/program/console_text.h"

#include "tools/log_application/show/ansi_text.h"
#include "vek/base/windows.h"

namespace log_application {

namespace {

bool isConsole(DWORD standardHandle) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(standardHandle), &mode) != 0;
}

// The number of bytes at the end of `text` that begin a character of UTF-8 and aren't all of it.
std::size_t incompleteEnd(std::string_view text) {
    for (std::size_t size = 1; size <= 3 && size <= text.size(); ++size) {
        const auto byte = static_cast<unsigned char>(text[text.size() - size]);
        if ((byte & 0xC0) != 0x80) {
            const std::size_t whole = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
            return whole > size ? size : 0;
        }
    }
    return 0;
}

// `text`, valid UTF-8, in the code page of the console.
std::string encode(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int wideSize = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    // A code page may need up to this many bytes for a UTF-16 unit.
    constexpr int mostBytes = 5;
    std::string encoded(static_cast<std::size_t>(wideSize) * mostBytes, '\0');
    const int encodedSize =
        WideCharToMultiByte(GetConsoleOutputCP(), 0, wide.data(), wideSize, encoded.data(),
                            static_cast<int>(encoded.size()), nullptr, nullptr);
    encoded.resize(static_cast<std::size_t>(encodedSize));
    return encoded;
}

}  // namespace

ConsoleText::ConsoleText(std::ostream& stream, unsigned long standardHandle)
    : owner(stream), console(isConsole(standardHandle) ? stream.rdbuf() : nullptr) {
    if (console != nullptr) {
        owner.rdbuf(this);
    }
}

ConsoleText::~ConsoleText() {
    if (console != nullptr) {
        owner.rdbuf(console);
    }
}

bool ConsoleText::write(std::string_view text) {
    std::string whole = incomplete + std::string(text);
    const std::size_t left = incompleteEnd(whole);
    incomplete = whole.substr(whole.size() - left);
    whole.resize(whole.size() - left);
    const std::string encoded = encode(utf8Of(whole));
    const auto size = static_cast<std::streamsize>(encoded.size());
    return console->sputn(encoded.data(), size) == size;
}

ConsoleText::int_type ConsoleText::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return traits_type::not_eof(character);
    }
    const char byte = traits_type::to_char_type(character);
    return write({&byte, 1}) ? character : traits_type::eof();
}

std::streamsize ConsoleText::xsputn(const char* text, std::streamsize size) {
    return write({text, static_cast<std::size_t>(size)}) ? size : 0;
}

int ConsoleText::sync() {
    return console->pubsync();
}

}  // namespace log_application
