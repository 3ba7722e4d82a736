#include "vek/net/address_text.h"

#include <algorithm>
#include <cstring>

#include "vek/base/windows.h"
#include "vek/exception.h"

// Behind windows.h, which it needs.
#include <ws2tcpip.h>

namespace vek::net {

std::string addressText(const AddressForm& form, const void* raw) {
    // Large enough for each of the forms.
    char text[80] = {};
    const std::size_t textSize = std::min(form.textSize, sizeof text);
    if (inet_ntop(form.family, static_cast<const char*>(raw) + form.offset, text, textSize) ==
        nullptr) {
        throw NetError(invalidArgument);
    }
    return text;
}

void parseAddress(const AddressForm& form, const std::string& text, void* raw) {
    // The system writes some addresses before it finds that the text goes on, so not to their
    // place. It reads up to a zero byte, which is no part of an address either.
    char address[sizeof(in6_addr)];
    if (form.size > sizeof address || text.find('\0') != std::string::npos ||
        inet_pton(form.family, text.c_str(), address) != 1) {
        throw NetError(invalidArgument);
    }
    std::memcpy(static_cast<char*>(raw) + form.offset, address, form.size);
}

}  // namespace vek::net
