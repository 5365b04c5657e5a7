#include "analysis/ControlAnalysis.h"

#include <algorithm>
#include <utility>

#include "VELKSettingsProvider.h"

namespace desk {

namespace {

constexpr size_t kMostListed = 1000;
constexpr int32_t kHandedOverCategory = 0;
constexpr int32_t kDefaultUser = 4;

}  // namespace

void ControlAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    if (command.request == VELK_IOC_INIT) {
        begin(played);
    } else if (command.request == VELK_IOC_UNINIT) {
        mFigures.atUninit = endAll(ControlEnd::Uninit, played.call->atUs);
        mIsUp = false;
    } else if (command.request == VELK_IOC_SINGLE_SHOT && mIsUp) {
        takeControl(played);  // the library keeps it even when the driver refuses it
    }
}

void ControlAnalysis::begin(const PlayedCall& played) {
    endAll(ControlEnd::Uninit, played.call->atUs);
    mFigures.atUninit = {};
    mIsUp = true;
    mScenario = static_cast<VELKScenario>(played.call->arguments.scenario.value_or(0));
    mSettings = VELKSettingsProvider::getSingleShotControlProvider();
    mDefaults.clear();
}

void ControlAnalysis::takeControl(const PlayedCall& played) {
    const CallArguments& arguments = played.call->arguments;
    const std::string_view call = played.call->info->name;
    if (call == "notifyResetSingleShotControl") {
        reset(arguments.category.value_or(kHandedOverCategory), played.call->atUs);
    } else if (call == "markCriticalTask") {
        const int32_t user = arguments.user.value_or(kDefaultUser);
        activate(played, user, find(user), true);
    } else if (arguments.control != nullptr) {
        activate(played, arguments.control->category, arguments.control.get(), true);
    } else if (arguments.category) {
        activate(played, *arguments.category, find(*arguments.category), true);
    } else {
        activate(played, kHandedOverCategory, nullptr, false);
    }
}

const VELKSingleShotControl* ControlAnalysis::find(int32_t category) const {
    if (const auto known = mSettings.find(category); known != mSettings.end()) {
        const bool hasScenario = known->second.contains(mScenario);
        const auto setting = known->second.find(hasScenario ? mScenario : VELK_SCENARIO_FALLBACK);
        return setting != known->second.end() ? &setting->second : nullptr;
    }
    const auto first = mDefaults.find(category);
    return first != mDefaults.end() ? &first->second : nullptr;
}

void ControlAnalysis::activate(const PlayedCall& played, int32_t category,
                               const VELKSingleShotControl* control, bool isCallers) {
    const int64_t atUs = played.call->atUs;
    Control active;
    active.isCallers = isCallers;
    if (control != nullptr) {
        active.values = valuesOf(*control);
        if (control->percentLevel != VELK_NO_REQUEST) {
            active.activation.percentLevel = control->percentLevel;
        }
        active.activation.uclampLevels = control->uclampLevels;
        active.activation.criticalTaskUclamps.assign(control->criticalTaskUclamps.begin(),
                                                     control->criticalTaskUclamps.end());
        for (const auto& [task, uclamp] : control->criticalTaskUclamps) {
            mTaskUclamps[task].insert(uclamp);
        }
        if (category != kHandedOverCategory && !mSettings.contains(category)) {
            mDefaults.try_emplace(category, *control);
        }
    }
    if (isCallers) {
        advanceTo(atUs);
        active.activation.category = category;
        active.activation.thread = played.thread;
        active.activation.call = played.call->info->name;
        active.activation.line = played.call->line;
        active.activation.fromUs = atUs;
        active.place = mFigures.activations++;
        active.activeBefore = mActiveCount++;
        mFigures.mostAtOnce = std::max(mFigures.mostAtOnce, mActiveCount);
    }
    mActive[category].push_back(std::move(active));
}

void ControlAnalysis::reset(int32_t category, int64_t atUs) {
    ++mFigures.resets;
    const bool isMatched =
            category == kHandedOverCategory ? resetNewest(atUs) : resetCategory(category, atUs);
    mFigures.unmatchedResets += isMatched ? 0 : 1;
}

// The stack also holds the controls of init and unsetCriticalTask.
bool ControlAnalysis::resetNewest(int64_t atUs) {
    std::vector<Control>& stack = mActive[kHandedOverCategory];
    if (stack.empty()) {
        return false;
    }
    Control newest = std::move(stack.back());
    stack.pop_back();
    withdraw(newest.values);
    end(newest, ControlEnd::Reset, atUs);
    return newest.isCallers;
}

// Withdraws the values of the control that the category stands for. A control that a caller
// supplied for the category, with other values, stays active.
bool ControlAnalysis::resetCategory(int32_t category, int64_t atUs) {
    const VELKSingleShotControl* const own = find(category);
    if (own == nullptr) {
        return false;
    }
    const ControlValues withdrawn = valuesOf(*own);
    withdraw(withdrawn);
    std::vector<Control> active = std::exchange(mActive[category], {});
    for (Control& control : active) {
        if (std::ranges::includes(withdrawn, control.values)) {
            end(control, ControlEnd::Reset, atUs);
        } else {
            mActive[category].push_back(std::move(control));
        }
    }
    return mActive[category].size() < active.size();
}

// The library removes equal values of other active controls as well.
void ControlAnalysis::withdraw(const ControlValues& values) {
    for (const auto& [field, task, uclamp] : values) {
        if (field != ControlField::TaskUclamp) {
            continue;
        }
        if (const auto active = mTaskUclamps.find(task); active != mTaskUclamps.end()) {
            active->second.erase(static_cast<int32_t>(uclamp));
            if (active->second.empty()) {
                mTaskUclamps.erase(active);
            }
        }
    }
}

void ControlAnalysis::advanceTo(int64_t atUs) {
    const int64_t timeUs = atUs - std::exchange(mSinceUs, atUs);
    mFigures.activeUs += mActiveCount >= 1 ? timeUs : 0;
    mFigures.overlapUs += mActiveCount >= 2 ? timeUs : 0;
}

void ControlAnalysis::end(Control& control, ControlEnd how, int64_t atUs) {
    if (!control.isCallers) {
        return;
    }
    advanceTo(atUs);
    --mActiveCount;
    const uint64_t activatedLater = mFigures.activations - control.place - 1;
    control.activation.overlaps = control.activeBefore + activatedLater;
    control.activation.untilUs = atUs;
    control.activation.end = how;
    if (control.place < kMostListed) {
        mFigures.list.resize(std::max<size_t>(mFigures.list.size(), control.place + 1));
        mFigures.list[control.place] = control.activation;
    }
}

UnresetControls ControlAnalysis::endAll(ControlEnd how, int64_t atUs) {
    std::map<uint64_t, ControlActivation> inOrder;
    for (auto& [category, controls] : mActive) {
        for (Control& control : controls) {
            end(control, how, atUs);
            if (control.isCallers) {
                inOrder[control.place] = control.activation;
            }
        }
    }
    mFigures.neverReset += inOrder.size();
    UnresetControls unreset;
    for (const auto& [place, activation] : inOrder) {
        if (unreset.controls.size() < kMostListed) {
            unreset.controls.push_back(activation);
        } else {
            ++unreset.furtherControls;
        }
    }
    for (const auto& [task, uclamps] : mTaskUclamps) {
        unreset.taskUclamps.emplace_back(task, *uclamps.rbegin());
    }
    mActive.clear();
    mTaskUclamps.clear();
    return unreset;
}

ControlFigures ControlAnalysis::figures(int64_t lastUs) const {
    ControlAnalysis closed = *this;
    closed.mFigures.active = closed.endAll(ControlEnd::None, lastUs);
    closed.mFigures.further = mFigures.activations - closed.mFigures.list.size();
    return closed.mFigures;
}

}  // namespace desk
