#include "foundation/ActiveCalls.h"

void ActiveCalls::waitForThoseInside() noexcept {
    const uint32_t epoch = mEpoch.fetch_add(1);
    std::atomic<uint32_t>& inside = mInside[epoch & 1];
    for (uint32_t count = inside.load(); count != 0; count = inside.load()) {
        inside.wait(count);
    }
}

void ActiveCalls::wakeWaiter(uint32_t epoch) noexcept {
    mInside[epoch & 1].notify_all();
}
