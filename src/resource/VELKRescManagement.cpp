#include "resource/VELKRescManagement.h"

#include <unistd.h>

#include "foundation/LogGate.h"
#include "foundation/Rollback.h"

constinit Published<VELKRescManagement> gPublishedResource;

VELKRescManagement::VELKRescManagement(const VELKInitParams& params)
    : mInitParams(params),
      mTaskIds(mStaticData),
      mGroupHeads(mStaticData),
      mSingleShotSettings(params.scenario),
      mActiveSingleShots(mStaticData) {}

VELKRescManagement::~VELKRescManagement() {
    if (mDeviceFd >= 0) {
        close(mDeviceFd);
    }
}

std::unique_ptr<VELKRescManagement> VELKRescManagement::createInstance(
        const VELKInitParams& params) {
    auto instance = std::make_unique<VELKRescManagement>(params);

    // Marking may store a descriptor at any moment, so it is taken over in one atomic step. A
    // descriptor of 0 and kNodeAbsent are not taken over, and the instance gets no descriptor.
    int32_t temporaryFd = gDeviceFd.load();
    while (temporaryFd > 0 && !gDeviceFd.compare_exchange_weak(temporaryFd, kNotOpened)) {
    }
    if (temporaryFd > 0) {
        instance->mDeviceFd = temporaryFd;
    } else if (temporaryFd == kNotOpened && !openVELKDevice(instance->mDeviceFd)) {
        return nullptr;
    }

    // A marking call may still be sending on the descriptor, which a failed instance closes.
    Rollback waitForMarking([temporaryFd]() noexcept {
        if (temporaryFd > 0) {
            gPublishedResource.waitForCallsInside();
        }
    });
    if (!instance->queryStaticData(params)) {
        return nullptr;
    }
    waitForMarking.dismiss();
    return instance;
}

bool VELKRescManagement::queryStaticData(const VELKInitParams& params) {
    VELK_LOGD("queryStaticData");
    const bool hasPlatformData = mStaticData.load(params);
    mAnchors.load(params);
    return hasPlatformData;
}

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task,
                                             bool& isFirstShowUp) {
    return mTaskIds.idOf(key, task, isFirstShowUp);
}

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task) {
    bool isFirstShowUp = false;
    return getUniqueTaskId(key, task, isFirstShowUp);
}

void VELKRescManagement::removeUniqueTaskId(const void* key, const int& task) {
    mTaskIds.forget(key, task);
}

void VELKRescManagement::updateTaskState(const int& task, int uniqueTaskId, unsigned tid,
                                         bool isStart) {
    if (isStart) {
        mTaskThreads.start(task, static_cast<unsigned>(uniqueTaskId), tid);
    } else {
        mTaskThreads.end(task, static_cast<unsigned>(uniqueTaskId));
    }
}

unsigned VELKRescManagement::findTaskIdFromTid(const int& task, unsigned tid) {
    return mTaskThreads.activeIdOf(task, tid);
}

void VELKRescManagement::getUniqueTaskIdsFromTask(const int& task, std::vector<unsigned>& out) {
    mTaskThreads.appendIds(task, out);
}

void VELKRescManagement::recordGroupHead(const int& task, const unsigned& uniqueTaskId,
                                         const VELKTaskExtraParams& extra) {
    mGroupHeads.record(task, uniqueTaskId, extra);
}

unsigned VELKRescManagement::lookupGroupHead(const int& task, const VELKTaskExtraParams& extra) {
    return mGroupHeads.find(task, extra);
}

bool VELKRescManagement::getSingleShotSetting(int category, VELKSingleShotControl& control) {
    return mSingleShotSettings.find(category, control) != ControlSource::None;
}

void VELKRescManagement::dumpTaskTable() {
    mTaskIds.dump();
}
