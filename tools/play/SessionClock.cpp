#include "play/SessionClock.h"

#include <atomic>
#include <chrono>

#include "clock/DeskClock.h"

namespace desk {

namespace {

std::atomic<int64_t> gOffsetNs = 0;

int64_t steadyNowNs() noexcept {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int64_t sessionNowNs() noexcept {
    return steadyNowNs() + gOffsetNs.load(std::memory_order_relaxed);
}

}  // namespace

SessionClock::SessionClock() {
    setClock(sessionNowNs);
}

SessionClock::~SessionClock() {
    setClock(nullptr);
}

int64_t SessionClock::beginCall(int64_t atUs) {
    const int64_t recordedNs = atUs * 1000;
    gOffsetNs.store(recordedNs - steadyNowNs(), std::memory_order_relaxed);
    return recordedNs;
}

int64_t SessionClock::endCall() {
    return sessionNowNs();
}

}  // namespace desk
