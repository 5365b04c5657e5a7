#include "resource/ActiveSingleShots.h"

#include <algorithm>
#include <iterator>

#include "resource/SingleShotRecord.h"
namespace {

// The larger of a floor and the active values; the floor alone when nothing is active.
int32_t largerOf(int32_t floor, const ActiveValues& values) {
    return values.empty() ? floor : std::max(floor, static_cast<int32_t>(values.largest()));
}

}  // namespace

uint64_t ActiveSingleShots::push(DetachedEntry&& entry) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    entry.front().serial = ++mLastSerial;
    mStack.splice(mStack.end(), entry);
    return mLastSerial;
}

ActiveSingleShots::DetachedEntry ActiveSingleShots::pop() {
    const std::lock_guard<std::mutex> lock(mMutex);
    DetachedEntry newest;
    if (!mStack.empty()) {
        newest.splice(newest.end(), mStack, std::prev(mStack.end()));
    }
    return newest;
}

void ActiveSingleShots::putBack(DetachedEntry&& entry) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    mStack.splice(mStack.end(), entry);
}

// Visits the values that the control asks for, each with the active values that it belongs to.
// The entries of its critical tasks have to exist.
template <typename Visitor>
void ActiveSingleShots::visitValues(const VELKSingleShotControl& control, Visitor&& visit) {
    if (control.percentLevel >= 1) {
        visit(mPercentLevels, control.percentLevel);
    }
    if (control.limits[0] != 0) {
        visit(mLimits, control.limits[0]);
    }
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        visit(mUclampLevels[i], control.uclampLevels[i]);
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        visit(mCriticalTaskUclamps.find(task)->second, uclamp);
    }
}

// Makes the entries that the control's critical tasks do not have yet; none is ever removed. Calls
// `prepare` with the entry of each task and with the number of values that the control has for it.
template <typename Prepare>
void ActiveSingleShots::ensureCriticalTaskEntries(const VELKSingleShotControl& control,
                                                  Prepare&& prepare) {
    const auto& tasks = control.criticalTaskUclamps;
    for (auto first = tasks.begin(); first != tasks.end();) {
        const auto last = tasks.upper_bound(first->first);
        prepare(mCriticalTaskUclamps.try_emplace(first->first).first->second,
                static_cast<size_t>(std::distance(first, last)));
        first = last;
    }
}

void ActiveSingleShots::add(const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mMutex);
    // Everything that allocates comes first, so that what follows cannot fail.
    ensureCriticalTaskEntries(control,
                              [](ActiveValues& values, size_t count) { values.makeRoom(count); });
    mPercentLevels.makeRoom(1);
    mLimits.makeRoom(1);
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        mUclampLevels[i].makeRoom(1);
    }
    visitValues(control, [](ActiveValues& values, int64_t value) { values.insert(value); });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

void ActiveSingleShots::takeBack(const VELKSingleShotControl& control, uint64_t serial,
                                 bool isAdded) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (serial != 0) {
        const auto position =
                std::find_if(mStack.begin(), mStack.end(),
                             [serial](const StackEntry& entry) { return entry.serial == serial; });
        if (position == mStack.end()) {
            return;
        }
        mStack.erase(position);
    }
    if (isAdded) {
        visitValues(control, [](ActiveValues& values, int64_t value) { values.eraseOne(value); });
        mSharedFlagCount -= control.sharedFlag ? 1 : 0;
    }
}

WithdrawnCounts ActiveSingleShots::withdraw(const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mMutex);
    ensureCriticalTaskEntries(control, [](ActiveValues&, size_t) {});
    WithdrawnCounts counts;
    counts.reserve(control.criticalTaskUclamps.size());
    visitValues(control, [&counts](ActiveValues& values, int64_t value) {
        counts.add(values.eraseAll(value));
    });
    mSharedFlagCount -= control.sharedFlag ? 1 : 0;
    return counts;
}

void ActiveSingleShots::undoWithdrawal(const VELKSingleShotControl& control,
                                       const WithdrawnCounts& counts) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    size_t position = 0;
    visitValues(control, [&](ActiveValues& values, int64_t value) {
        values.insertCopies(value, counts[position++]);
    });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

ActiveSingleShots::CriticalTasks ActiveSingleShots::fillMergedRecord(
        VELK_SINGLE_SHOT_PARAM& record, const VELKSingleShotControl& control, bool isReset) {
    setSingleShotParam(record, control);
    if (!control.uclampLevels.empty()) {
        mergeUclampLevels(record, control.uclampLevels.size());
    }
    CriticalTasks criticalTasks;
    if (!control.criticalTaskUclamps.empty()) {
        criticalTasks = mergeCriticalTasks(control);
    }
    if (control.percentLevel != -1) {
        const std::lock_guard<std::mutex> lock(mMutex);
        record.percentLevel = mPercentLevels.empty()
                                      ? VELK_PERCENT_NONE_ACTIVE
                                      : static_cast<int32_t>(mPercentLevels.largest());
    }
    if (control.limits[0] != 0) {
        const std::lock_guard<std::mutex> lock(mMutex);
        record.limits[0] =
                mLimits.empty() ? VELK_LIMIT_NONE_ACTIVE : static_cast<uint32_t>(mLimits.largest());
    }
    if (control.sharedFlag) {
        const std::lock_guard<std::mutex> lock(mMutex);
        // A reset tells the driver to drop the flag once no active control holds it any more.
        record.sharedFlag = isReset ? mSharedFlagCount == 0 : mSharedFlagCount >= 1;
    }
    return criticalTasks;
}

void ActiveSingleShots::mergeUclampLevels(VELK_SINGLE_SHOT_PARAM& record, size_t levels) {
    const std::lock_guard<std::mutex> lock(mMutex);
    VELKJsonConvertor* const convertor = mStaticData.platformConvertor();
    for (size_t i = 0; i < levels; ++i) {
        // Compared as a signed value, as the driver takes it.
        const auto floor = static_cast<int32_t>(
                convertor != nullptr ? convertor->getClusterLevel(static_cast<int>(i))
                                     : VELK_MAX_UCLAMP);
        record.uclampLevels[i] = static_cast<uint32_t>(largerOf(floor, mUclampLevels[i]));
    }
}

ActiveSingleShots::CriticalTasks ActiveSingleShots::mergeCriticalTasks(
        const VELKSingleShotControl& control) {
    CriticalTasks merged;
    merged.reserve(control.criticalTaskUclamps.size());
    const std::lock_guard<std::mutex> lock(mMutex);
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        // Of several entries for one task only the first is merged; the others stay as they are.
        const bool isFirst = merged.empty() || merged.back().task != task;
        merged.push_back({task, isFirst ? mergedUclamp(task, uclamp) : uclamp});
    }
    return merged;
}

int32_t ActiveSingleShots::mergedUclamp(int32_t task, int32_t uclamp) const {
    const auto active = mCriticalTaskUclamps.find(task);
    if (active == mCriticalTaskUclamps.end() ||
        mStaticData.targetTimeOf(task) == VELK_UNKNOWN_TASK_TARGET_TIME) {
        return uclamp;
    }
    return largerOf(mStaticData.defaultUclampOf(task), active->second);
}

int32_t ActiveSingleShots::criticalValueOf(int task) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const int32_t value = mStaticData.defaultUclampOf(task);
    const auto active = mCriticalTaskUclamps.find(task);
    return active != mCriticalTaskUclamps.end() ? largerOf(value, active->second) : value;
}
