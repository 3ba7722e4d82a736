// The exceptions that read Winsock's last error stand apart, so that only who uses them depends on
// Winsock.
#include "vek/base/windows.h"
#include "vek/exception.h"

namespace vek {

namespace {

std::uint32_t lastSocketError() {
    return static_cast<std::uint32_t>(WSAGetLastError());
}

}  // namespace

NoSuchAddress::NoSuchAddress() : ExceptionOf(lastSocketError()) {}

NoPeer::NoPeer() : ExceptionOf(lastSocketError()) {}

NoNetwork::NoNetwork() : ExceptionOf(lastSocketError()) {}

}  // namespace vek
