#include <algorithm>
#include <utility>

#include "Model.h"

namespace fuzz {

using fake::platform;

namespace {

// Places: active values of the same place are merged.
constexpr int64_t kPercent = 0;
constexpr int64_t kLimit = 1;
constexpr int64_t kLevel = 2;            // and the position
constexpr int64_t kCriticalTask = 1000;  // and the task enum

bool areValidLevels(const std::vector<uint32_t>& levels) {
    return levels.size() <= 8 &&
           (levels.empty() || *std::max_element(levels.begin(), levels.end()) <= 1024);
}

bool isValidControl(const VELKSingleShotControl& control) {
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        if (uclamp < 0 || uclamp > 1024) {
            return false;
        }
    }
    return areValidLevels(control.uclampLevels) && areValidLevels(control.rangeLevels1) &&
           areValidLevels(control.rangeLevels2) && areValidLevels(control.rangeLevels3) &&
           control.percentLevel >= -1 && control.percentLevel <= 100;
}

void putLevels(Record& record, size_t offset, const std::vector<uint32_t>& levels) {
    for (size_t i = 0; i < levels.size() && i < 8; ++i) {
        record.put(offset + 4 * i, levels[i]);
    }
}

Record unmerged(const VELKSingleShotControl& control) {
    Record record(35);
    record.put(0, gThread);
    putLevels(record, 4, control.uclampLevels);
    record.put(36, control.percentLevel);
    record.put(40, control.releaseRequest ? -2 : control.requestValue);
    record.put(44, control.auxValue);
    putLevels(record, 48, control.rangeLevels1);
    putLevels(record, 80, control.rangeLevels2);
    putLevels(record, 112, control.rangeLevels3);
    record.put(144, control.isReset);
    record.put(145, control.auxFlag);
    record.put(308, control.limits);
    record.put(324, control.passFlag);
    record.put(325, control.sharedFlag);
    record.put(328, control.extraValues);
    return record;
}

}  // namespace

std::vector<Model::Active> Model::valuesOf(const VELKSingleShotControl& control) {
    std::vector<Active> values;
    if (control.percentLevel >= 1) {
        values.push_back({kPercent, control.percentLevel});
    }
    if (control.limits[0] > 0) {
        values.push_back({kLimit, control.limits[0]});
    }
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        values.push_back({kLevel + static_cast<int64_t>(i), control.uclampLevels[i]});
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        values.push_back({kCriticalTask + task, uclamp});
    }
    return values;
}

// The largest active value of a place, and no less than the floor.
int64_t Model::largest(int64_t place, int64_t floor) const {
    for (const Active& active : mUp->active) {
        floor = active.place == place ? std::max(floor, active.value) : floor;
    }
    return floor;
}

const VELKSingleShotControl* Model::setting(int category) const {
    if (const auto known = platform().singleShots.find(category);
        known != platform().singleShots.end()) {
        for (const VELKScenario scenario : {mUp->scenario, VELK_SCENARIO_FALLBACK}) {
            if (known->second.contains(scenario)) {
                return &known->second.at(scenario);
            }
        }
        return nullptr;
    }
    const auto found = mUp->defaults.find(category);
    return found == mUp->defaults.end() ? nullptr : &found->second;
}

int Model::sendMerged(const VELKSingleShotControl& control) {
    Record record = unmerged(control);
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        const auto floor = static_cast<int32_t>(platform().sources[0].clusterLevels[i]);
        record.put(4 + 4 * i,
                   static_cast<int32_t>(largest(kLevel + static_cast<int64_t>(i), floor)));
    }
    if (control.percentLevel != -1) {
        record.put(36, static_cast<int32_t>(largest(kPercent, -2)));
    }
    if (control.limits[0] != 0) {
        const int64_t limit = largest(kLimit, 0);
        record.put(308, static_cast<uint32_t>(limit == 0 ? 999999 : limit));
    }
    if (control.sharedFlag) {
        record.put(325, control.isReset ? mUp->sharedCount == 0 : mUp->sharedCount >= 1);
    }

    std::vector<std::pair<uint32_t, int32_t>> threads;
    std::optional<int> previous;
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        const fake::TaskFigures* const known = figures(task);
        const bool isMerged = previous != task && (known == nullptr || known->targetTime != -2);
        const int32_t floor = known == nullptr ? 0 : known->defaultUclamp;
        previous = task;
        for (const Slot& slot : mUp->slots[task]) {
            threads.emplace_back(slot.id, isMerged ? largest(kCriticalTask + task, floor) : uclamp);
        }
    }
    for (size_t i = 0; i < threads.size() && threads.size() <= 20; ++i) {
        record.put(148 + 4 * i, threads[i].first);
        record.put(228 + 4 * i, threads[i].second);
    }
    return send(mFd, record);
}

int Model::control(const VELKSingleShotControl* control) {
    if (!mUp || !isValidControl(*control)) {
        return -1;
    }
    if (control->category == 0) {
        mUp->stack.push_back(*control);
    } else if (!platform().singleShots.contains(control->category)) {
        mUp->defaults.emplace(control->category, *control);
    }
    for (const Active& value : valuesOf(*control)) {
        mUp->active.push_back(value);
    }
    mUp->sharedCount += control->sharedFlag ? 1 : 0;
    return sendMerged(*control);
}

int Model::controlOf(int category) {
    const VELKSingleShotControl* const found = mUp ? setting(category) : nullptr;
    if (found == nullptr) {
        return -1;
    }
    VELKSingleShotControl chosen = *found;
    chosen.category = category;
    return control(&chosen);
}

int Model::resetControl(int category) {
    if (!mUp) {
        return -1;
    }
    const bool isStacked = category == 0 && !mUp->stack.empty();
    const VELKSingleShotControl* const found = isStacked       ? &mUp->stack.back()
                                               : category != 0 ? setting(category)
                                                               : nullptr;
    if (found == nullptr) {
        return -1;
    }
    VELKSingleShotControl control = *found;
    if (isStacked) {
        mUp->stack.pop_back();
    }
    if (!isValidControl(control)) {
        return -1;
    }
    for (const Active& value : valuesOf(control)) {
        std::erase(mUp->active, value);
    }
    mUp->sharedCount -= control.sharedFlag ? 1 : 0;
    control.isReset = true;
    control.releaseRequest |= control.requestValue != -1;
    return sendMerged(control);
}

// --- Critical tasks ------------------------------------------------------------------------------

// While down: through a descriptor that stays open for the next init or uninit.
int Model::sendTemporarily(const VELKSingleShotControl& control) {
    mTemporaryFd = mTemporaryFd == -1 ? open() : mTemporaryFd;
    return send(mTemporaryFd, unmerged(control));
}

int Model::mark(int user) {
    if (platform().properties[fake::kForceOff] != 0) {
        return -1;
    }
    if (mUp) {
        return controlOf(user);
    }
    const auto known = platform().singleShots.find(user);
    if (known == platform().singleShots.end() || !known->second.contains(VELK_SCENARIO_FALLBACK)) {
        return 0;
    }
    return sendTemporarily(known->second.at(VELK_SCENARIO_FALLBACK));
}

int Model::unmark() {
    const VELKSingleShotControl plain;
    return mUp ? control(&plain) : sendTemporarily(plain);
}

int Model::span(uint32_t number, int task) {
    const fake::TaskFigures* const known = mUp ? figures(task) : nullptr;
    if (known == nullptr || known->defaultUclamp <= 0) {
        return -1;
    }
    Record record(number);
    record.put(0, gThread);
    if (number == 36) {
        record.put(4, static_cast<int32_t>(largest(kCriticalTask + task, known->defaultUclamp)));
    }
    return send(mFd, record);
}

}  // namespace fuzz
