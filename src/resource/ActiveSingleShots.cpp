#include <algorithm>
#include <iterator>

#include "resource/SingleShotRecord.h"
#include "resource/VELKRescManagement.h"

namespace {

// The convertor's answer for the target time of a task kind that it does not know.
constexpr int32_t kUnknownTaskKind = -2;

// The larger of a floor and the active values; the floor alone when nothing is active.
int32_t largerOf(int32_t floor, const ActiveValues& values) {
    return values.empty() ? floor : std::max(floor, static_cast<int32_t>(values.largest()));
}

}  // namespace

uint64_t VELKRescManagement::pushUserSingleShotControl(DetachedEntry&& entry) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    entry.front().serial = ++mLastSerial;
    mUserSingleShotControls.splice(mUserSingleShotControls.end(), entry);
    return mLastSerial;
}

VELKRescManagement::DetachedEntry VELKRescManagement::popUserSingleShotControl() {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    DetachedEntry newest;
    if (!mUserSingleShotControls.empty()) {
        newest.splice(newest.end(), mUserSingleShotControls,
                      std::prev(mUserSingleShotControls.end()));
    }
    return newest;
}

void VELKRescManagement::putBackUserSingleShotControl(DetachedEntry&& entry) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    mUserSingleShotControls.splice(mUserSingleShotControls.end(), entry);
}

// Visits the values that the control contributes, each with the multiset it belongs to. The
// multisets of its critical tasks exist already.
template <typename Visitor>
void VELKRescManagement::visitActiveValues(const VELKSingleShotControl& control, Visitor&& visit) {
    if (control.percentLevel >= 1) {
        visit(mActivePercentLevels, control.percentLevel);
    }
    if (control.limits[0] != 0) {
        visit(mActiveLimits, control.limits[0]);
    }
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        visit(mActiveUclampLevels[i], control.uclampLevels[i]);
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        visit(mActiveCriticalTaskUclamps.find(task)->second, uclamp);
    }
}

// Entries are made when first asked for and stay. Calls `prepare` with each and with the number of
// values that the control has for it.
template <typename Prepare>
void VELKRescManagement::ensureCriticalTaskEntries(const CriticalTaskUclamps& tasks,
                                                   Prepare&& prepare) {
    for (auto first = tasks.begin(); first != tasks.end();) {
        const auto last = tasks.upper_bound(first->first);
        prepare(mActiveCriticalTaskUclamps.try_emplace(first->first).first->second,
                static_cast<size_t>(std::distance(first, last)));
        first = last;
    }
}

void VELKRescManagement::registerSingleShotControl(const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    // Everything that can fail for want of memory comes first.
    ensureCriticalTaskEntries(control.criticalTaskUclamps,
                              [](ActiveValues& values, size_t count) { values.makeRoom(count); });
    mActivePercentLevels.makeRoom(1);
    mActiveLimits.makeRoom(1);
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        mActiveUclampLevels[i].makeRoom(1);
    }
    visitActiveValues(control, [](ActiveValues& values, int64_t value) { values.insert(value); });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

void VELKRescManagement::takeBackSingleShotControl(const VELKSingleShotControl& control,
                                                   uint64_t serial, bool isRegistered) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    if (serial != 0) {
        const auto position =
                std::find_if(mUserSingleShotControls.begin(), mUserSingleShotControls.end(),
                             [serial](const StackEntry& entry) { return entry.serial == serial; });
        if (position == mUserSingleShotControls.end()) {
            return;
        }
        mUserSingleShotControls.erase(position);
    }
    if (isRegistered) {
        visitActiveValues(control,
                          [](ActiveValues& values, int64_t value) { values.eraseOne(value); });
        mSharedFlagCount -= control.sharedFlag ? 1 : 0;
    }
}

WithdrawnCounts VELKRescManagement::unregisterSingleShotControl(
        const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    ensureCriticalTaskEntries(control.criticalTaskUclamps, [](ActiveValues&, size_t) {});
    WithdrawnCounts counts;
    counts.reserve(control.criticalTaskUclamps.size());
    visitActiveValues(control, [&counts](ActiveValues& values, int64_t value) {
        counts.add(values.eraseAll(value));
    });
    mSharedFlagCount -= control.sharedFlag ? 1 : 0;
    return counts;
}

void VELKRescManagement::undoUnregisterSingleShotControl(const VELKSingleShotControl& control,
                                                         const WithdrawnCounts& counts) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    size_t position = 0;
    visitActiveValues(control, [&](ActiveValues& values, int64_t value) {
        values.insertCopies(value, counts[position++]);
    });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

void VELKRescManagement::resolveSingleShotControl(VELK_SINGLE_SHOT_PARAM& record,
                                                  const VELKSingleShotControl& control,
                                                  bool isReset) {
    setSingleShotParam(record, control);
    if (!control.uclampLevels.empty()) {
        resolveUclampLevels(record, control.uclampLevels.size());
    }
    CriticalTaskUclamps criticalTasks = control.criticalTaskUclamps;
    if (!criticalTasks.empty()) {
        resolveCriticalTaskUclamps(criticalTasks);
    }
    if (control.percentLevel != -1) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        record.percentLevel = mActivePercentLevels.empty()
                                      ? VELK_PERCENT_NONE_ACTIVE
                                      : static_cast<int32_t>(mActivePercentLevels.largest());
    }
    if (control.limits[0] != 0) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        record.limits[0] = mActiveLimits.empty() ? VELK_LIMIT_NONE_ACTIVE
                                                 : static_cast<uint32_t>(mActiveLimits.largest());
    }
    if (control.sharedFlag) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        // A reset tells the driver to drop the flag once nobody holds it any more.
        record.sharedFlag = isReset ? mSharedFlagCount == 0 : mSharedFlagCount >= 1;
    }
    if (!criticalTasks.empty()) {
        setCriticalTasks(record, criticalTasks, *this);
    }
}

void VELKRescManagement::resolveUclampLevels(VELK_SINGLE_SHOT_PARAM& record, size_t levels) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    VELKJsonConvertor* const convertor = mpJsonConvertor.get();
    for (size_t i = 0; i < levels; ++i) {
        // The floor is compared as the signed value that the convertor's level is to the driver.
        const auto floor = static_cast<int32_t>(
                convertor != nullptr ? convertor->getClusterLevel(static_cast<int>(i))
                                     : VELK_MAX_UCLAMP);
        record.uclampLevels[i] = static_cast<uint32_t>(largerOf(floor, mActiveUclampLevels[i]));
    }
}

void VELKRescManagement::resolveCriticalTaskUclamps(CriticalTaskUclamps& table) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    // Of several entries for one task kind only the first is merged; the others stay as they are.
    for (auto entry = table.begin(); entry != table.end();
         entry = table.upper_bound(entry->first)) {
        const int32_t task = entry->first;
        const auto active = mActiveCriticalTaskUclamps.find(task);
        VELKJsonConvertor* const convertor = convertorOf(task);
        if (active == mActiveCriticalTaskUclamps.end() ||
            (convertor != nullptr && convertor->getTaskTargetTime(task) == kUnknownTaskKind)) {
            continue;
        }
        entry->second = largerOf(defaultUclampOf(task), active->second);
    }
}

int32_t VELKRescManagement::criticalValueOf(int task) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    const int32_t value = defaultUclampOf(task);
    const auto active = mActiveCriticalTaskUclamps.find(task);
    return active != mActiveCriticalTaskUclamps.end() ? largerOf(value, active->second) : value;
}
