#include <algorithm>

#include "resource/VELKRescManagement.h"

namespace {

// The convertor's answer for the target time of a task kind that it does not know.
constexpr int32_t kUnknownTaskKind = -2;

}  // namespace

void VELKRescManagement::pushUserSingleShotControl(const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    mUserSingleShotControls.push_back(control);
}

void VELKRescManagement::dropUserSingleShotControl(const VELKSingleShotControl& control) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    const auto newest =
            std::find(mUserSingleShotControls.rbegin(), mUserSingleShotControls.rend(), control);
    if (newest != mUserSingleShotControls.rend()) {
        mUserSingleShotControls.erase(std::next(newest).base());
    }
}

bool VELKRescManagement::popUserSingleShotControl(VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    if (mUserSingleShotControls.empty()) {
        return false;
    }
    control = std::move(mUserSingleShotControls.back());
    mUserSingleShotControls.pop_back();
    return true;
}

void VELKRescManagement::restoreUserSingleShotControl(VELKSingleShotControl&& control) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    try {
        mUserSingleShotControls.push_back(std::move(control));
    } catch (const std::bad_alloc&) {
        // Another thread has taken the room that the control left, and there is no more of it.
        return;
    }
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
        visit(mActiveUclampLevels[i], static_cast<int32_t>(control.uclampLevels[i]));
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        visit(mActiveCriticalTaskUclamps.find(task)->second, uclamp);
    }
}

// Entries are made when first asked for and stay.
void VELKRescManagement::ensureCriticalTaskEntries(const VELKSingleShotControl& control) {
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        mActiveCriticalTaskUclamps.try_emplace(task);
    }
}

void VELKRescManagement::registerSingleShotControl(const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    // Everything that can fail for want of memory comes first.
    ensureCriticalTaskEntries(control);
    const size_t room = 1 + control.criticalTaskUclamps.size();
    visitActiveValues(control, [room](auto& values, auto) { values.makeRoom(room); });
    visitActiveValues(control, [](auto& values, auto value) { values.insert(value); });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

void VELKRescManagement::undoRegisterSingleShotControl(
        const VELKSingleShotControl& control) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    visitActiveValues(control, [](auto& values, auto value) { values.eraseOne(value); });
    mSharedFlagCount -= control.sharedFlag ? 1 : 0;
}

WithdrawnCounts VELKRescManagement::unregisterSingleShotControl(
        const VELKSingleShotControl& control) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    ensureCriticalTaskEntries(control);
    WithdrawnCounts counts;
    counts.reserve(control.criticalTaskUclamps.size());
    visitActiveValues(control,
                      [&counts](auto& values, auto value) { counts.add(values.eraseAll(value)); });
    mSharedFlagCount -= control.sharedFlag ? 1 : 0;
    return counts;
}

void VELKRescManagement::undoUnregisterSingleShotControl(const VELKSingleShotControl& control,
                                                         const WithdrawnCounts& counts) noexcept {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    size_t position = 0;
    visitActiveValues(control, [&](auto& values, auto value) {
        values.insertCopies(value, counts[position++]);
    });
    mSharedFlagCount += control.sharedFlag ? 1 : 0;
}

void VELKRescManagement::resolveSingleShotControl(VELKSingleShotControl& control) {
    if (!control.uclampLevels.empty()) {
        resolveUclampLevels(control.uclampLevels);
    }
    if (!control.criticalTaskUclamps.empty()) {
        resolveCriticalTaskUclamps(control.criticalTaskUclamps);
    }
    if (control.percentLevel != -1) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        control.percentLevel = mActivePercentLevels.empty() ? VELK_PERCENT_NONE_ACTIVE
                                                            : mActivePercentLevels.largest();
    }
    if (control.limits[0] != 0) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        control.limits[0] =
                mActiveLimits.empty() ? VELK_LIMIT_NONE_ACTIVE : mActiveLimits.largest();
    }
    if (control.sharedFlag) {
        const std::lock_guard<std::mutex> lock(mResourceLock);
        // A reset tells the driver to drop the flag once nobody holds it any more.
        control.sharedFlag = control.isReset ? mSharedFlagCount == 0 : mSharedFlagCount >= 1;
    }
}

void VELKRescManagement::resolveUclampLevels(std::vector<uint32_t>& levels) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    for (size_t i = 0; i < levels.size(); ++i) {
        auto level = static_cast<int32_t>(clusterLevel(static_cast<int>(i)));
        if (!mActiveUclampLevels[i].empty()) {
            level = std::max(level, mActiveUclampLevels[i].largest());
        }
        levels[i] = static_cast<uint32_t>(level);
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
        entry->second = defaultUclampOf(task);
        if (!active->second.empty()) {
            entry->second = std::max(entry->second, active->second.largest());
        }
    }
}

int32_t VELKRescManagement::criticalValueOf(int task) {
    const std::lock_guard<std::mutex> lock(mResourceLock);
    const int32_t value = defaultUclampOf(task);
    const auto active = mActiveCriticalTaskUclamps.find(task);
    if (active == mActiveCriticalTaskUclamps.end() || active->second.empty()) {
        return value;
    }
    return std::max(value, active->second.largest());
}
