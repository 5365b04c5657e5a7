/*
 * The resource manager: everything the library keeps while it is up. One instance exists from the
 * first init to the last uninit. Each table is a class that guards its own data; the manager owns
 * the tables.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "VELKTypes.h"
#include "foundation/CommandChannel.h"
#include "foundation/CommandRecords.h"
#include "foundation/Published.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"
#include "resource/ActiveSingleShots.h"
#include "resource/AnchorTable.h"
#include "resource/GroupHeadTable.h"
#include "resource/RefusedRegistrations.h"
#include "resource/SingleShotSettings.h"
#include "resource/StaticData.h"
#include "resource/TaskIdTable.h"
#include "resource/TaskThreadTable.h"

class VELK_INTERNAL VELKRescManagement {
  public:
    using TaskState = ::TaskState;

    // Does no input or output.
    [[gnu::cold]] VELK_API explicit VELKRescManagement(const VELKInitParams& params);
    // Closes the descriptor, then destroys the tables, and last the convertors.
    [[gnu::cold]] VELK_API ~VELKRescManagement();
    VELKRescManagement(const VELKRescManagement&) = delete;
    VELKRescManagement& operator=(const VELKRescManagement&) = delete;

    // A ready instance, or empty when the node cannot be opened or there is no tuning data. Takes
    // over the descriptor that marking opened while the library was down. The caller holds the
    // global mutex.
    [[gnu::cold]] VELK_API static std::unique_ptr<VELKRescManagement> createInstance(
            const VELKInitParams& params);

    // Fetches the tuning data and the targets of the anchors. Returns whether there is platform
    // tuning data.
    [[gnu::cold]] VELK_API bool queryStaticData(const VELKInitParams& params);

    const VELKInitParams& initParams() const { return mInitParams; }
    int32_t deviceFd() const { return mDeviceFd; }
    const StaticData& staticData() const { return mStaticData; }

    // The tables, for the library's own operations.
    AnchorTable& anchors() { return mAnchors; }
    TaskIdTable& taskIds() { return mTaskIds; }
    TaskThreadTable& taskThreads() { return mTaskThreads; }
    RefusedRegistrations& refusedRegistrations() { return mRefusedRegistrations; }
    SingleShotSettings& singleShotSettings() { return mSingleShotSettings; }
    ActiveSingleShots& activeSingleShots() { return mActiveSingleShots; }

    // Exported operations on the tables, which say what each does.

    VELK_API unsigned getUniqueTaskId(const void* key, const int& task, bool& isFirstShowUp);
    VELK_API unsigned getUniqueTaskId(const void* key, const int& task);
    VELK_API void removeUniqueTaskId(const void* key, const int& task);
    // Starts or ends the task in the table of threads; an end ignores `tid`.
    VELK_API void updateTaskState(const int& task, int uniqueTaskId, unsigned tid, bool isStart);
    VELK_API unsigned findTaskIdFromTid(const int& task, unsigned tid);
    VELK_API void getUniqueTaskIdsFromTask(const int& task, std::vector<unsigned>& out);
    [[gnu::cold]] VELK_API void recordGroupHead(const int& task, const unsigned& uniqueTaskId,
                                                const VELKTaskExtraParams& extra);
    [[gnu::cold]] VELK_API unsigned lookupGroupHead(const int& task,
                                                    const VELKTaskExtraParams& extra);
    [[gnu::cold]] VELK_API bool getSingleShotSetting(int category, VELKSingleShotControl& control);
    // Takes no lock: only while no other thread makes a new id.
    [[gnu::cold]] VELK_API void dumpTaskTable() VELK_NO_THREAD_SAFETY_ANALYSIS;

  private:
    // Destroyed in reverse order: mStaticData with the convertors last.
    const VELKInitParams mInitParams;
    int32_t mDeviceFd = kNotOpened;
    StaticData mStaticData;
    AnchorTable mAnchors;
    TaskIdTable mTaskIds;
    TaskThreadTable mTaskThreads;
    GroupHeadTable mGroupHeads;
    RefusedRegistrations mRefusedRegistrations;
    SingleShotSettings mSingleShotSettings;
    ActiveSingleShots mActiveSingleShots;
};

// The one instance, for operations that use it without the global mutex.
VELK_INTERNAL extern Published<VELKRescManagement> gPublishedResource;
