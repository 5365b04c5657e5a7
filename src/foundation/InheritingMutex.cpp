#include "foundation/InheritingMutex.h"

#include <chrono>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

// Several times as long as a thread takes to wake up. While one does, those behind it keep trying,
// so that a hand-over through the kernel ends a queue instead of renewing it.
constexpr std::chrono::microseconds kTrying{200};
// Each try takes the mutex's line from the processor that the holder runs on.
constexpr std::chrono::microseconds kBetweenTries{1};

// Whether the attributes ask for inheritance.
bool askForInheritance(pthread_mutexattr_t& attributes) {
#if defined(__ANDROID__) && __ANDROID_API__ < 28
    static_cast<void>(attributes);
    return false;
#else
    return pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT) == 0;
#endif
}

}  // namespace

InheritingMutex::InheritingMutex() noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    if (!askForInheritance(attributes) || pthread_mutex_init(&mMutex, &attributes) != 0) {
        pthread_mutex_init(&mMutex, nullptr);
    }
    pthread_mutexattr_destroy(&attributes);
}

void InheritingMutex::lockContended() {
    const Clock::time_point end = Clock::now() + kTrying;
    for (Clock::time_point now = Clock::now(), next = now; now < end; now = Clock::now()) {
        if (now >= next) {
            if (try_lock()) {
                return;
            }
            next = now + kBetweenTries;
        }
    }
    if (const int error = pthread_mutex_lock(&mMutex); error != 0) {
        throw std::system_error(error, std::generic_category());
    }
}
