#include "vek/thread/read_write_emulation.h"

#include "vek/thread/scope_guard.h"

namespace vek::thread {

void ReadWriteEmulation::lockShared() {
    ScopeGuard guard(lock);
    if (writer != 0 || writersWaiting != 0) {
        ++readersWaiting;
        while (writer != 0 || writersWaiting != 0) {
            sleepUnder(guard, readerGate, [this] { readerGate.wait(); });
        }
        --readersWaiting;
    }
    ++readers;
}

void ReadWriteEmulation::lockExclusive() {
    ScopeGuard guard(lock);
    if (writer != 0 || readers != 0) {
        ++writersWaiting;
        while (writer != 0 || readers != 0) {
            sleepUnder(guard, writerGate, [this] { writerGate.wait(); });
        }
        --writersWaiting;
    }
    writer = 1;
}

void ReadWriteEmulation::unlock() {
    const ScopeGuard guard(lock);
    const bool wasWriter = writer != 0;
    if (wasWriter) {
        --writer;
    } else {
        --readers;
    }
    if (!wasWriter && readers != 0) {
        return;
    }
    if (writersWaiting != 0) {
        writerGate.wakeOne();
    } else if (readersWaiting != 0) {
        readerGate.wakeAll();
    }
}

}  // namespace vek::thread
