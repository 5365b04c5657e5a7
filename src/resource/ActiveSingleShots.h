/*
 * The single-shot controls that are active: the stack of controls that callers handed over, and the
 * values that all active controls ask for, whose maxima the driver gets.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"
#include "resource/ActiveValues.h"
#include "resource/StaticData.h"

class VELK_INTERNAL ActiveSingleShots {
  public:
    // An entry of the stack. Its serial number tells it from an entry that is pushed later, which
    // may come to lie at the same address.
    struct StackEntry {
        // NOLINTNEXTLINE(modernize-pass-by-value): a copy made in place saves a move.
        explicit StackEntry(const VELKSingleShotControl& handedOver) : control(handedOver) {}
        VELKSingleShotControl control;
        uint64_t serial = 0;
    };
    // Holds one entry while it is moved onto the stack or off it, or none. Moving an entry between
    // lists neither copies it nor fails.
    using DetachedEntry = std::list<StackEntry>;

    struct CriticalTask {
        int32_t task;
        int32_t uclamp;
    };
    using CriticalTasks = std::vector<CriticalTask>;

    // `staticData`: holds the levels and uclamps that the merge does not go below.
    explicit ActiveSingleShots(const StaticData& staticData) : mStaticData(staticData) {}

    // Pushes the entry and returns its serial number, which is never 0.
    uint64_t push(DetachedEntry&& entry) noexcept VELK_EXCLUDES(mMutex);
    // Takes the newest entry off the stack; an empty list when there is none.
    DetachedEntry pop() VELK_EXCLUDES(mMutex);
    // Pushes an entry that was popped, with the serial number that it has.
    void putBack(DetachedEntry&& entry) noexcept VELK_EXCLUDES(mMutex);

    // Adds the control's values to the active ones; all or none.
    void add(const VELKSingleShotControl& control) VELK_EXCLUDES(mMutex);
    // Undoes a notification that failed halfway: removes the stack entry with this serial number, 0
    // for none, and the control's values when they were added. No effect when a reset has popped
    // the entry meanwhile, which has removed the values too.
    void takeBack(const VELKSingleShotControl& control, uint64_t serial, bool isAdded) noexcept
            VELK_EXCLUDES(mMutex);
    // Removes the control's values and all equal ones, also those of other controls; all or none.
    WithdrawnCounts withdraw(const VELKSingleShotControl& control) VELK_EXCLUDES(mMutex);
    // Puts back what withdrawing the control has removed.
    void undoWithdrawal(const VELKSingleShotControl& control,
                        const WithdrawnCounts& counts) noexcept VELK_EXCLUDES(mMutex);

    // Fills a zeroed record from the control, except for its critical tasks. Each value that the
    // control asks for is replaced by the maximum over all active controls. `isReset`: the control
    // was withdrawn. Returns the critical tasks with their merged uclamps; the caller knows their
    // unique task ids and adds them to the record.
    CriticalTasks fillMergedRecord(VELK_SINGLE_SHOT_PARAM& record,
                                   const VELKSingleShotControl& control, bool isReset)
            VELK_EXCLUDES(mMutex);
    // The larger of the task's default uclamp and what active controls ask for it.
    int32_t criticalValueOf(int task) VELK_EXCLUDES(mMutex);

  private:
    void mergeUclampLevels(VELK_SINGLE_SHOT_PARAM& record, size_t levels) VELK_EXCLUDES(mMutex);
    CriticalTasks mergeCriticalTasks(const VELKSingleShotControl& control) VELK_EXCLUDES(mMutex);
    int32_t mergedUclamp(int32_t task, int32_t uclamp) const VELK_REQUIRES(mMutex);
    template <typename Visitor>
    void visitValues(const VELKSingleShotControl& control, Visitor&& visit) VELK_REQUIRES(mMutex);
    template <typename Prepare>
    void ensureCriticalTaskEntries(const VELKSingleShotControl& control, Prepare&& prepare)
            VELK_REQUIRES(mMutex);

    const StaticData& mStaticData;
    std::list<StackEntry> mStack VELK_GUARDED_BY(mMutex);  // newest last
    uint64_t mLastSerial VELK_GUARDED_BY(mMutex) = 0;
    std::array<ActiveValues, 8> mUclampLevels VELK_GUARDED_BY(mMutex);  // by position
    ActiveValues mPercentLevels VELK_GUARDED_BY(mMutex);
    ActiveValues mLimits VELK_GUARDED_BY(mMutex);
    std::unordered_map<int32_t, ActiveValues> mCriticalTaskUclamps VELK_GUARDED_BY(mMutex);
    // How many active controls hold the shared flag. Resets without a notification make it
    // negative.
    int32_t mSharedFlagCount VELK_GUARDED_BY(mMutex) = 0;
    std::mutex mMutex;
};
