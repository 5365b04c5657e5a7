// Records which mutexes the library takes and releases, in order with everything else.
#include <pthread.h>

#include <cerrno>
#include <utility>

#include "support/Recorder.h"

namespace {

void note(const char* what, const pthread_mutex_t* mutex) {
    if (fake::tInLibrary && fake::recorder().isOn()) {
        const fake::Side side(false);
        fake::recorder().record(fake::kLock, what + fake::recorder().lockName(mutex));
    }
}

}  // namespace

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_trylock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (fake::tInLibrary && fake::tWaitError != 0) {
        return std::exchange(fake::tWaitError, 0);
    }
    const int result = __real_pthread_mutex_lock(mutex);
    note("lock ", mutex);
    return result;
}

int __wrap_pthread_mutex_trylock(pthread_mutex_t* mutex) {
    const bool isTaken = fake::tInLibrary && fake::tWaitError != 0;
    const int result = isTaken ? EBUSY : __real_pthread_mutex_trylock(mutex);
    if (result == 0) {
        note("lock ", mutex);
    }
    return result;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    note("unlock ", mutex);
    return __real_pthread_mutex_unlock(mutex);
}
}
