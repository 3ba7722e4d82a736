#include "vek/proc/inherited_stream.h"

namespace vek::proc {

namespace {

bool isInheritable(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != 0 && (flags & HANDLE_FLAG_INHERIT) != 0;
}

}  // namespace

InheritedStream::InheritedStream(HANDLE chosen, DWORD standard)
    : original(chosen != INVALID_HANDLE_VALUE ? chosen : GetStdHandle(standard)) {
    // INVALID_HANDLE_VALUE is also the pseudo handle of this process: it must not be duplicated.
    if (original == nullptr || original == INVALID_HANDLE_VALUE || isInheritable(original)) {
        return;
    }
    if (DuplicateHandle(GetCurrentProcess(), original, GetCurrentProcess(), &copy, 0, TRUE,
                        DUPLICATE_SAME_ACCESS) == 0) {
        copy = nullptr;
    }
}

InheritedStream::~InheritedStream() {
    if (copy != nullptr) {
        CloseHandle(copy);
    }
}

}  // namespace vek::proc
