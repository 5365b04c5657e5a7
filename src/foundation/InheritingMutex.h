/*
 * A mutex whose holder runs with the priority of the most urgent thread that waits for it. Without
 * that, an urgent thread that waits for a thread of low priority waits as long as threads of any
 * priority in between keep the CPU busy.
 *
 * When threads wait for such a mutex, every hand-over goes through the kernel, which costs more
 * than what the mutex guards. So a thread first tries for a while, in which the holder is usually
 * done, and waits only then.
 */
#pragma once

#include <pthread.h>

#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"

// Not recursive. Where the C library or the kernel has no priority inheritance it is an ordinary
// mutex.
class VELK_CAPABILITY("mutex") VELK_INTERNAL InheritingMutex {
  public:
    InheritingMutex() noexcept;
    ~InheritingMutex() { pthread_mutex_destroy(&mMutex); }
    InheritingMutex(const InheritingMutex&) = delete;
    InheritingMutex& operator=(const InheritingMutex&) = delete;

    // Throws std::system_error when the kernel cannot let the thread wait.
    void lock() VELK_ACQUIRE() {
        if (!try_lock()) {
            lockContended();
        }
    }
    // NOLINTNEXTLINE(readability-identifier-naming): the standard library's name.
    bool try_lock() noexcept VELK_TRY_ACQUIRE(true) { return pthread_mutex_trylock(&mMutex) == 0; }
    void unlock() noexcept VELK_RELEASE() { pthread_mutex_unlock(&mMutex); }

  private:
    [[gnu::cold]] void lockContended() VELK_ACQUIRE();

    pthread_mutex_t mMutex;
};
