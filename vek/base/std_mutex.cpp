#include "vek/base/std_mutex.h"

#include <pthread.h>

namespace vek {

MemberStdMutex::~MemberStdMutex() {
    pthread_mutex_destroy(mutex.native_handle());
}

}  // namespace vek
