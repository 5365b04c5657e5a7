#include "clock/DeskClock.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace desk {

namespace {

int64_t monotonicNowNs() noexcept {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

std::atomic<DeskClock> gClock = monotonicNowNs;
thread_local uint32_t tTid = 0;

}  // namespace

int64_t nowNs() noexcept {
    return gClock.load(std::memory_order_acquire)();
}

void setClock(DeskClock clock) noexcept {
    gClock.store(clock != nullptr ? clock : monotonicNowNs, std::memory_order_release);
}

uint32_t currentTid() noexcept {
    if (tTid == 0) {
        // After a fork the thread has another id.
        static const int isRegistered = pthread_atfork(nullptr, nullptr, [] { tTid = 0; });
        static_cast<void>(isRegistered);
        tTid = static_cast<uint32_t>(gettid());
    }
    return tTid;
}

}  // namespace desk
