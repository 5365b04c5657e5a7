#include "foundation/ActiveCalls.h"

constinit ActiveCalls gActiveCalls;

void ActiveCalls::waitForCallsInside() noexcept {
    const uint32_t closing = mOpenCounter.load();
    const uint32_t opening = 1 - closing;
    mInside[opening].fetch_add(kClosed);
    mOpenCounter.store(opening);

    std::atomic<int32_t>& inside = mInside[closing];
    inside.fetch_sub(kClosed);
    for (int32_t count = inside.load(); count != -kClosed; count = inside.load()) {
        inside.wait(count);
    }
}

void ActiveCalls::wakeWaiter(uint32_t counter) noexcept {
    mInside[counter].notify_all();
}

bool ActiveCalls::isQuiet() const noexcept {
    const uint32_t open = mOpenCounter.load();
    return mInside[open].load() == 0 && mInside[1 - open].load() == -kClosed;
}
