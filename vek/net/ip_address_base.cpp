#include "vek/net/ip_address_base.h"

#include <ostream>

#include "vek/exception.h"
#include "vek/net/address_text.h"

namespace vek::net {

bool IPAddressBase::tryFromString(const std::string& text) {
    try {
        fromString(text);
        return true;
    } catch (const NetError& error) {
        if (error.code() != invalidArgument) {
            throw;
        }
        return false;
    }
}

std::ostream& operator<<(std::ostream& stream, const IPAddressBase& address) {
    std::string text = address.toString();
    if (address.port() != 0) {
        // std::to_string, because the stream may have another number format.
        text += ':' + std::to_string(address.port());
    }
    return stream << text;
}

}  // namespace vek::net
