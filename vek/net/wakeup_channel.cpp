#include "vek/net/wakeup_channel.h"

#include "vek/exception.h"

namespace vek::net {

namespace {

constexpr std::uint32_t loopback = 0x7F000001;
constexpr char wakeupByte = 'W';

}  // namespace

WakeupChannel::WakeupChannel() : WakeupChannel(Unbound()) {
    address.setAddress(loopback);
    reader.bind(address);
    reader.localAddress(address);
}

WakeupChannel::WakeupChannel(Unbound) : reader(false), writer(false) {}

void WakeupChannel::addTo(SocketSet& set) const {
    set.add(reader.nativeHandle());
}

void WakeupChannel::notify() {
    writer.sendTo(&wakeupByte, sizeof wakeupByte, address);
}

bool WakeupChannel::consume(SocketSet& set) {
    if (!set.isSet(reader.nativeHandle())) {
        return false;
    }
    drain();
    return true;
}

void WakeupChannel::drain() {
    char byte = 0;
    try {
        reader.read(&byte, sizeof byte);
    } catch (const NetError& error) {
        // A larger datagram isn't ours: any program on this machine can send one. It has been
        // dropped and must not end the waiting thread.
        if (error.code() != WSAEMSGSIZE) {
            throw;
        }
    }
}

}  // namespace vek::net
