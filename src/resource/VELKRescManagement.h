/*
 * The resource manager: everything the library keeps while it is up. One instance exists from the
 * first init to the last uninit. One source file a table. What runs once a camera session rather
 * than once a frame is marked cold, which keeps it small.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "VELKJsonConvertor.h"
#include "VELKSettingsProvider.h"
#include "VELKTypes.h"
#include "foundation/CommandChannel.h"
#include "foundation/CommandRecords.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"
#include "resource/ActiveValues.h"
#include "resource/ErrorHandle.h"
#include "resource/SingleShotRecord.h"

// Answer of lookupGroupHead when there is no group head.
inline constexpr uint32_t INVALID_UNIQUE_TASK_ID = 0xFFFFFFFF;

// Task enums below are described by the platform, enums above by the customer, this one by neither.
inline constexpr int32_t kTaskEnumGap = 21;

// Figures that stand in for a task that no convertor describes.
inline constexpr int32_t kUnknownTargetTime = -1;
inline constexpr int32_t kUnknownDefaultUclamp = 0;
inline constexpr int32_t kUnknownSpecValue = -1;

class VELK_INTERNAL VELKRescManagement {
  public:
    // One thread that runs, or ran, a task. An ended slot is reused by the task's next start.
    struct TaskState {
        bool isActive;
        uint32_t tid;
        int32_t uniqueTaskId;
    };

    // {latency target, jitter target} of an anchor.
    using AnchorSpec = std::array<int, 2>;

    // Does no input or output.
    [[gnu::cold]] VELK_API explicit VELKRescManagement(const VELKInitParams& params);
    // Closes the descriptor, then releases the tables and last the convertors.
    [[gnu::cold]] VELK_API ~VELKRescManagement();
    VELKRescManagement(const VELKRescManagement&) = delete;
    VELKRescManagement& operator=(const VELKRescManagement&) = delete;

    // A ready instance, or empty when the node cannot be opened or there is no tuning data. Takes
    // over the descriptor that was opened while the library was down. Under the global mutex.
    [[gnu::cold]] VELK_API static std::unique_ptr<VELKRescManagement> createInstance(
            const VELKInitParams& params);

    const VELKInitParams& initParams() const { return mInitParams; }
    int32_t deviceFd() const { return mDeviceFd; }

    // --- Static tuning data (StaticData.cpp) -----------------------------------------------------

    // Fetches the convertors and the anchor specifications. Whether there is platform tuning data.
    [[gnu::cold]] VELK_API bool queryStaticData(const VELKInitParams& params);

    // The convertor that describes the task, null when none does.
    VELKJsonConvertor* convertorOf(int task) const {
        if (mpJsonConvertor != nullptr && task < kTaskEnumGap) {
            return mpJsonConvertor.get();
        }
        if (mpCustomJsonConvertor != nullptr && task > kTaskEnumGap) {
            return mpCustomJsonConvertor.get();
        }
        return nullptr;
    }
    int32_t targetTimeOf(int task) const {
        VELKJsonConvertor* const convertor = convertorOf(task);
        return convertor != nullptr ? convertor->getTaskTargetTime(task) : kUnknownTargetTime;
    }
    int32_t defaultUclampOf(int task) const {
        VELKJsonConvertor* const convertor = convertorOf(task);
        return convertor != nullptr ? convertor->getTaskDefaultUclamp(task) : kUnknownDefaultUclamp;
    }
    int32_t specValueOf(int task) const;
    bool isVIPTask(int task) const;
    // The platform's name of a task, else the customer's, whatever the enum; else empty.
    [[gnu::cold]] std::string taskName(int task) const;
    // Level of a CPU cluster or of a level position, full capacity without tuning data.
    uint32_t clusterLevel(int index) const {
        return mpJsonConvertor != nullptr ? mpJsonConvertor->getClusterLevel(index)
                                          : VELK_MAX_UCLAMP;
    }
    [[gnu::cold]] uint32_t clusterDefaultLevel(int cluster) const;

    // --- Task identity (TaskIdentity.cpp) --------------------------------------------------------

    // The unique task id of the pair; sets isFirstShowUp when the pair is new, else leaves it.
    VELK_API unsigned getUniqueTaskId(const void* key, const int& task, bool& isFirstShowUp);
    VELK_API unsigned getUniqueTaskId(const void* key, const int& task);
    // Forgets the pair, whose id number is spent; no effect on an unknown pair.
    VELK_API void removeUniqueTaskId(const void* key, const int& task)
            VELK_EXCLUDES(mUniqueTaskIdMutex);
    // Takes a slot for a start, or makes every slot with this id inactive for an end.
    VELK_API void updateTaskState(const int& task, int uniqueTaskId, unsigned tid, bool isStart);
    // Id of the first active start of the task on the thread, 0 when there is none.
    VELK_API unsigned findTaskIdFromTid(const int& task, unsigned tid);
    // Appends the id of every slot of the task, active or not.
    VELK_API void getUniqueTaskIdsFromTask(const int& task, std::vector<unsigned>& out)
            VELK_EXCLUDES(mTaskStateMutex);
    // Group heads take no lock; the caller holds the global mutex.
    [[gnu::cold]] VELK_API void recordGroupHead(const int& task, const unsigned& uniqueTaskId,
                                                const VELKTaskExtraParams& extra);
    [[gnu::cold]] VELK_API unsigned lookupGroupHead(const int& task,
                                                    const VELKTaskExtraParams& extra);

    // The same for the entry operations, which do them on every frame (TaskIdentityInline.h).
    unsigned uniqueTaskIdOf(const void* key, int task, bool& isFirstShowUp)
            VELK_EXCLUDES(mUniqueTaskIdMutex);
    void recordTaskStart(int task, unsigned uniqueTaskId, unsigned tid)
            VELK_EXCLUDES(mTaskStateMutex);
    void recordTaskEnd(int task, unsigned uniqueTaskId) VELK_EXCLUDES(mTaskStateMutex);
    unsigned activeTaskIdOf(int task, unsigned tid) VELK_EXCLUDES(mTaskStateMutex);

    // Rewrites the dump file (TaskTableDump.cpp).
    [[gnu::cold]] VELK_API void dumpTaskTable() VELK_REQUIRES(mUniqueTaskIdMutex);

    // Task registrations that the driver has refused so far.
    ErrorHandle<unsigned, VELK_TASK_INIT_PARAM>& taskErrors() { return mTaskErrors; }

    // --- Single-shot settings (SingleShotSettings.cpp) -------------------------------------------

    // Copies the control of a category in the current scenario. False, with `control` untouched,
    // when there is none.
    [[gnu::cold]] VELK_API bool getSingleShotSetting(int category, VELKSingleShotControl& control)
            VELK_EXCLUDES(mSettingsLock);
    // Makes the control the default of its category when the category has none. False when the
    // settings know the category: then nothing is counted that could be taken back.
    [[gnu::cold]] bool addDefaultSingleShotControl(const VELKSingleShotControl& control)
            VELK_EXCLUDES(mSettingsLock);
    // Undoes what was counted for a notification that failed halfway; the default goes with the
    // last.
    void takeBackDefaultSingleShotControl(int category) noexcept VELK_EXCLUDES(mSettingsLock);

    // --- Active single-shot controls (ActiveSingleShots.cpp) -------------------------------------

    // An entry of the stack of handed-over controls. Its serial number tells it from an entry that
    // is pushed later, which may come to lie at the same address.
    struct StackEntry {
        explicit StackEntry(const VELKSingleShotControl& handedOver) : control(handedOver) {}
        VELKSingleShotControl control;
        uint64_t serial = 0;
    };
    // Holds one entry while it is moved onto the stack or off it, or none. Moving an entry between
    // lists neither copies it nor fails.
    using DetachedEntry = std::list<StackEntry>;

    // Pushes the entry and returns its serial number, which is never 0.
    uint64_t pushUserSingleShotControl(DetachedEntry&& entry) noexcept VELK_EXCLUDES(mResourceLock);
    // Takes the newest entry off the stack; an empty list when there is none.
    DetachedEntry popUserSingleShotControl() VELK_EXCLUDES(mResourceLock);
    // Pushes an entry that was popped, with the serial number that it has.
    void putBackUserSingleShotControl(DetachedEntry&& entry) noexcept VELK_EXCLUDES(mResourceLock);

    // Adds the control's values to the active ones; all or none.
    void registerSingleShotControl(const VELKSingleShotControl& control)
            VELK_EXCLUDES(mResourceLock);
    // Undoes a notification that failed halfway: removes the stack entry with this serial number, 0
    // for none, and the control's values when they were added. No effect when a reset has popped
    // the entry meanwhile, which has removed the values too.
    void takeBackSingleShotControl(const VELKSingleShotControl& control, uint64_t serial,
                                   bool isRegistered) noexcept VELK_EXCLUDES(mResourceLock);
    // Removes the control's values and all their equals; all or none.
    WithdrawnCounts unregisterSingleShotControl(const VELKSingleShotControl& control)
            VELK_EXCLUDES(mResourceLock);
    // Puts back what a withdrawal removed.
    void undoUnregisterSingleShotControl(const VELKSingleShotControl& control,
                                         const WithdrawnCounts& counts) noexcept
            VELK_EXCLUDES(mResourceLock);
    // Fills a zeroed record with the control, its values replaced by the merge of everything
    // active. `isReset`: the control is being withdrawn.
    void resolveSingleShotControl(VELK_SINGLE_SHOT_PARAM& record,
                                  const VELKSingleShotControl& control, bool isReset)
            VELK_EXCLUDES(mResourceLock);
    // The larger of the task's default uclamp and what active controls ask for it.
    int32_t criticalValueOf(int task) VELK_EXCLUDES(mResourceLock);

    // --- Anchors (AnchorSpecs.cpp) ---------------------------------------------------------------

    // The targets that the tuning data sets for an anchor at its start; empty when it has none in
    // force, which makes the anchor invalid from then on.
    std::optional<AnchorSpec> validateAnchor(int anchor) VELK_EXCLUDES(mAnchorLock);
    // The same at its end, without validation; empty when a start has found the anchor invalid.
    std::optional<AnchorSpec> anchorSpecUnlessInvalid(int anchor) VELK_EXCLUDES(mAnchorLock);

  private:
    unsigned addUniqueTaskId(const void* key, int task, bool& isFirstShowUp)
            VELK_REQUIRES(mUniqueTaskIdMutex);
    void logTaskStateSize(int task) VELK_REQUIRES(mTaskStateMutex);
    void addTaskSlot(int task, const TaskState& started) VELK_REQUIRES(mTaskStateMutex);
    AnchorSpec anchorSpec(int anchor) const VELK_REQUIRES(mAnchorLock);
    void resolveUclampLevels(VELK_SINGLE_SHOT_PARAM& record, size_t levels)
            VELK_EXCLUDES(mResourceLock);
    void resolveCriticalTaskUclamps(CriticalTaskUclamps& table) VELK_EXCLUDES(mResourceLock);
    template <typename Visitor>
    void visitActiveValues(const VELKSingleShotControl& control, Visitor&& visit)
            VELK_REQUIRES(mResourceLock);
    template <typename Prepare>
    void ensureCriticalTaskEntries(const CriticalTaskUclamps& tasks, Prepare&& prepare)
            VELK_REQUIRES(mResourceLock);

    // The order of the members is the order of construction; the convertors are released last.
    const VELKInitParams mInitParams;
    int32_t mDeviceFd = kNotOpened;
    uint32_t mNextUniqueTaskId VELK_GUARDED_BY(mUniqueTaskIdMutex) = 1;
    std::shared_ptr<VELKJsonConvertor> mpJsonConvertor;
    std::shared_ptr<VELKJsonConvertor> mpCustomJsonConvertor;

    // The platform's targets with the customer's non-zero ones in their place.
    std::unordered_map<int, AnchorSpec> mAnchorSpecs VELK_GUARDED_BY(mAnchorLock);
    std::unordered_set<int> mInvalidAnchors VELK_GUARDED_BY(mAnchorLock);
    std::mutex mAnchorLock;

    // Who does what: the value of a caller's key, or a group's index, and a task enum.
    struct TaskPair {
        int64_t key;
        int32_t task;
        bool operator==(const TaskPair&) const = default;
    };
    struct TaskPairHash {
        // Keys are addresses, often in regular distances that share a factor with the number of
        // buckets; nothing of their pattern is left in the upper half of the product. Not noexcept:
        // the table then keeps each hash instead of computing it again on its way along a bucket.
        size_t operator()(const TaskPair& pair) const {
            const auto key = static_cast<uint64_t>(pair.key);
            const auto task = static_cast<uint64_t>(pair.task) << 32U;
            return static_cast<size_t>(((key + task) * 0x9E3779B97F4A7C15U) >> 32U);
        }
    };
    std::unordered_map<TaskPair, uint32_t, TaskPairHash> mUniqueTaskIds
            VELK_GUARDED_BY(mUniqueTaskIdMutex);
    // Unique task id -> task enum, filled in dump mode only.
    std::unordered_map<uint32_t, int> mUniqueIdToTask VELK_GUARDED_BY(mUniqueTaskIdMutex);
    std::unordered_map<int, std::vector<TaskState>> mTaskState VELK_GUARDED_BY(mTaskStateMutex);
    // A group head's group index and task enum -> its unique task id.
    std::unordered_map<TaskPair, uint32_t, TaskPairHash> mGroupHeads;
    std::mutex mUniqueTaskIdMutex;
    std::mutex mTaskStateMutex;

    ErrorHandle<unsigned, VELK_TASK_INIT_PARAM> mTaskErrors;

    const VELKScenario mScenario;
    // Category -> control in every scenario, for the categories that the settings do not know, with
    // the number of notifications that have handed a control of the category over.
    struct DefaultControl {
        explicit DefaultControl(VELKSingleShotControl handedOver)
            : control(std::move(handedOver)) {}
        VELKSingleShotControl control;
        uint64_t notifications = 1;
    };
    std::map<int, DefaultControl> mDefaultSingleShotTable VELK_GUARDED_BY(mSettingsLock);
    std::mutex mSettingsLock;

    std::list<StackEntry> mUserSingleShotControls VELK_GUARDED_BY(mResourceLock);
    uint64_t mLastSerial VELK_GUARDED_BY(mResourceLock) = 0;
    std::array<ActiveValues, 8> mActiveUclampLevels VELK_GUARDED_BY(mResourceLock);
    ActiveValues mActivePercentLevels VELK_GUARDED_BY(mResourceLock);
    ActiveValues mActiveLimits VELK_GUARDED_BY(mResourceLock);
    std::unordered_map<int32_t, ActiveValues> mActiveCriticalTaskUclamps
            VELK_GUARDED_BY(mResourceLock);
    int32_t mSharedFlagCount VELK_GUARDED_BY(mResourceLock) = 0;
    std::mutex mResourceLock;
};
