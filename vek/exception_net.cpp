// The exceptions that call WSAGetLastError are in a file of their own, so that only programs that
// use them import Winsock.
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
