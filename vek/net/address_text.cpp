#include "vek/net/address_text.h"

#include <algorithm>
#include <cstring>

#include "vek/base/windows.h"
#include "vek/exception.h"

// Needs windows.h first.
#include <ws2tcpip.h>

namespace vek::net {

std::string addressText(const AddressForm& form, const void* raw) {
    // Large enough for both forms.
    char text[80] = {};
    const std::size_t textSize = std::min(form.textSize, sizeof text);
    if (inet_ntop(form.family, static_cast<const char*>(raw) + form.offset, text, textSize) ==
        nullptr) {
        throw NetError(invalidArgument);
    }
    return text;
}

void parseAddress(const AddressForm& form, const std::string& text, void* raw) {
    // inet_pton may write before it finds that the text is invalid, so it gets a buffer of its own.
    // It stops at a zero byte, which is not part of an address either.
    char address[sizeof(in6_addr)];
    if (form.size > sizeof address || text.find('\0') != std::string::npos ||
        inet_pton(form.family, text.c_str(), address) != 1) {
        throw NetError(invalidArgument);
    }
    std::memcpy(static_cast<char*>(raw) + form.offset, address, form.size);
}

}  // namespace vek::net
