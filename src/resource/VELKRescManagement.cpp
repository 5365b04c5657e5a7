#include "resource/VELKRescManagement.h"

#include <unistd.h>

#include "foundation/ActiveCalls.h"
#include "foundation/Rollback.h"

VELKRescManagement::VELKRescManagement(const VELKInitParams& params)
    : mInitParams(params), mScenario(params.scenario) {}

VELKRescManagement::~VELKRescManagement() {
    if (mDeviceFd >= 0) {
        close(mDeviceFd);
    }
}

std::unique_ptr<VELKRescManagement> VELKRescManagement::createInstance(
        const VELKInitParams& params) {
    auto instance = std::make_unique<VELKRescManagement>(params);

    // Marking may store a descriptor at any moment, so it is taken away in one step. A descriptor
    // of 0 and an absent node stay where they are, and the instance stays without a descriptor.
    int32_t temporaryFd = gDeviceFd.load();
    while (temporaryFd > 0 && !gDeviceFd.compare_exchange_weak(temporaryFd, kNotOpened)) {
    }
    if (temporaryFd > 0) {
        instance->mDeviceFd = temporaryFd;
    } else if (temporaryFd == kNotOpened && !openVELKDevice(instance->mDeviceFd)) {
        return nullptr;
    }

    // A mark may still be sending on the descriptor that a failed instance is about to close.
    Rollback waitForMarks([temporaryFd]() noexcept {
        if (temporaryFd > 0) {
            gActiveCalls.waitForThoseInside();
        }
    });
    if (!instance->queryStaticData(params)) {
        return nullptr;
    }
    waitForMarks.dismiss();
    return instance;
}
