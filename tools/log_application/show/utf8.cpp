#include "tools/log_application/show/utf8.h"

#include <array>

namespace log_application {

namespace {

struct Form {
    unsigned mask;
    unsigned lead;
    std::size_t size;
    std::uint32_t lowest;  // smaller numbers have a shorter form
};

constexpr std::array<Form, 4> forms = {{
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
}};

constexpr std::uint32_t lastCodePoint = 0x10FFFF;
constexpr std::uint32_t firstSurrogate = 0xD800;
constexpr std::uint32_t lastSurrogate = 0xDFFF;

unsigned byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// Returns size 0 if the bytes aren't a character of this form.
Character decode(std::string_view text, std::size_t at, const Form& form) {
    const Character none = {0, 0, false};
    if (text.size() - at < form.size) {
        return none;
    }
    std::uint32_t codePoint = byteAt(text, at) & ~form.mask;
    for (std::size_t i = 1; i < form.size; ++i) {
        const unsigned next = byteAt(text, at + i);
        if ((next & 0xC0) != 0x80) {
            return none;
        }
        codePoint = codePoint << 6 | (next & 0x3F);
    }
    const bool surrogate = codePoint >= firstSurrogate && codePoint <= lastSurrogate;
    if (codePoint < form.lowest || codePoint > lastCodePoint || surrogate) {
        return none;
    }
    return {codePoint, form.size, true};
}

}  // namespace

Character decodeUtf8(std::string_view text, std::size_t at) {
    const unsigned first = byteAt(text, at);
    for (const Form& form : forms) {
        if ((first & form.mask) == form.lead) {
            const Character character = decode(text, at, form);
            if (character.size != 0) {
                return character;
            }
        }
    }
    return {first, 1, false};
}

}  // namespace log_application
