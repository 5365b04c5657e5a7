#include "Model.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "support/Node.h"

namespace fuzz {

using fake::platform;
using fake::TaskFigures;

int32_t gThread = 0;

void fail(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
    std::abort();
}

// --- Comparing commands --------------------------------------------------------------------------

void Model::observe(unsigned number, const void* record, size_t size, int result) {
    Effect& effect = mEffects.emplace_back(Effect{Record(number), result});
    if (size > 0) {
        std::memcpy(effect.record.bytes.data(), record, size);
    }
}

Model::Effect Model::next(unsigned number) {
    if (mChecked == mEffects.size() || mEffects[mChecked].record.number != number) {
        fail("effect %zu of %zu is not command %u", mChecked, mEffects.size(), number);
    }
    return mEffects[mChecked++];
}

int Model::send(int fd, const Record& record) {
    if (fd < 0) {
        return -1;
    }
    const Effect effect = next(record.number);
    const auto& bytes = effect.record.bytes;
    if (bytes != record.bytes) {
        const auto at = std::mismatch(bytes.begin(), bytes.end(), record.bytes.begin());
        fail("command %u: byte %td is %u, not %u", record.number, at.first - bytes.begin(),
             *at.first, *at.second);
    }
    return effect.result == 0 ? 0 : -1;
}

// A descriptor, -1 when the node cannot be opened, -2 when there is none.
int Model::open() {
    const int fd = next(fake::kOpenNode).result;
    return fd == -ENOENT ? -2 : std::max(fd, -1);
}

void Model::checkComplete(bool isSilent) {
    if (mChecked != mEffects.size() && !isSilent) {
        fail("command %u is too many", mEffects[mChecked].record.number);
    }
    mEffects.clear();
    mChecked = 0;
    std::vector<int> expected;
    for (const int fd : {mUp ? mFd : -1, mTemporaryFd}) {
        if (fd >= 0) {
            expected.push_back(fd);
        }
    }
    if (fake::node().openDescriptors() != expected && !isSilent) {
        fail("%zu descriptors should be open", expected.size());
    }
}

// --- Lifecycle -----------------------------------------------------------------------------------

int Model::init(const VELKInitParams& params) {
    if (platform().properties[fake::kForceOff] != 0) {
        return -1;
    }
    if (mUp) {
        ++mUsers;
        return 0;
    }
    mFd = mTemporaryFd > 0 ? std::exchange(mTemporaryFd, -1) : mTemporaryFd == -1 ? open() : -2;
    if (mFd == -1 || platform().sources[0].isMissing) {
        return -1;
    }
    mUsers = 1;
    mUp.emplace(Tables{params.scenario, !platform().sources[1].isMissing});
    mUp->anchors = {platform().anchors[params.scenario], platform().custAnchors[params.scenario]};

    Record record(27);
    record.put(0, params.driverParam);
    for (uint32_t i = 0; i < 3; ++i) {
        record.put(4 + 4 * i, platform().sources[0].clusterLevels[i]);
        record.put(16 + 4 * i, params.queryMaxEfficientFreq ? platform().efficientFreqs[i] : 0);
    }
    record.put(28, params.tuningParam1 <= 0 ? 10 : params.tuningParam1);
    record.put(32, params.tuningParam2 <= 0 ? 65 : params.tuningParam2);
    const int result = send(mFd, record);

    VELKSingleShotControl byDefault;
    const auto& levels = platform().sources[0].clusterDefaultLevels;
    byDefault.rangeLevels1.assign(levels.begin(), levels.end());
    control(&byDefault);
    if (params.applyExtraDefaultControl) {
        byDefault.rangeLevels1.clear();
        byDefault.extraValues[0] = 1;
        control(&byDefault);
    }
    return result;
}

int Model::uninit() {
    mTemporaryFd = mTemporaryFd >= 0 ? -1 : mTemporaryFd;
    if (mUsers == 0) {
        return -1;
    }
    if (--mUsers > 0) {
        return 0;
    }
    mUp.reset();
    mTemporaryFd = -1;
    return send(mFd, Record(32));
}

// --- Tasks ---------------------------------------------------------------------------------------

const TaskFigures* Model::figures(int task) const {
    static const TaskFigures unknown;
    if (task == 21 || (task > 21 && !mUp->hasCustomer)) {
        return nullptr;
    }
    const auto& tasks = platform().sources[task > 21 ? 1 : 0].tasks;
    return tasks.contains(task) ? &tasks.at(task) : &unknown;
}

bool Model::isValid(int task) const {
    const TaskFigures* const known = figures(task);
    return known != nullptr && known->targetTime > 0 && known->defaultUclamp > 0;
}

Model::Pair* Model::find(const void* key, int task) {
    for (Pair& pair : mUp->pairs) {
        if (pair.key == key && pair.task == task) {
            return &pair;
        }
    }
    return nullptr;
}

Record Model::registration(uint32_t id, int task, const VELKTaskExtraParams& extra) const {
    const TaskFigures& known = *figures(task);
    Record record(28);
    record.put(0, id);
    record.put(8, known.defaultUclamp);
    record.put(12, std::max(5, known.targetTime));
    record.put(16, known.specValue);
    record.put(24, known.isVip);
    record.put(25, extra.extraFlag0);
    record.put(26, extra.extraFlag1);
    std::string name = platform().sources[0].tasks[task].name;
    if (name.empty() && mUp->hasCustomer) {
        name = platform().sources[1].tasks[task].name;
    }
    for (const std::string part : {"TASK_", "CUSTOM_"}) {
        const size_t position = name.find(part);
        name = position == std::string::npos ? name : name.replace(position, part.size(), "");
    }
    for (size_t i = 0; i < name.size() && i < 9; ++i) {
        record.put(27 + i, name[i]);
    }
    return record;
}

Record Model::taskRecord(uint32_t number, uint32_t id) {
    Record record(number);
    record.put(0, gThread);
    record.put(4, id);
    return record;
}

int Model::taskStart(const void* key, int task, const VELKTaskExtraParams* extra) {
    if (!mUp || !isValid(task)) {
        return -1;
    }
    Pair* pair = find(key, task);
    if (pair == nullptr) {
        pair = &mUp->pairs.emplace_back(Pair{key, task, mUp->nextId++, {}});
        const Record record = registration(pair->id, task, *extra);
        if (send(mFd, record) != 0) {
            pair->refused = record;
        }
    }
    if (pair->refused && send(mFd, *pair->refused) == 0) {
        pair->refused.reset();
    }
    const int result = send(mFd, taskRecord(29, pair->id));
    std::vector<Slot>& slots = mUp->slots[task];
    auto slot = std::find_if(slots.begin(), slots.end(), [](const Slot& s) { return !s.isActive; });
    slot = slot == slots.end() ? slots.insert(slot, Slot{}) : slot;
    *slot = {true, gThread, pair->id};
    return result;
}

int Model::taskEnd(const void* key, int task) {
    if (!mUp || !isValid(task)) {
        return -1;
    }
    const Pair* const pair = find(key, task);
    if (pair == nullptr) {
        ++mUp->nextId;  // used up by a pair that never started
        return -1;
    }
    for (Slot& slot : mUp->slots[task]) {
        slot.isActive = slot.isActive && slot.id != pair->id;
    }
    return send(mFd, taskRecord(30, pair->id));
}

int Model::sceneChange(int task, VELKSceneChangeMode mode) {
    if (mUp) {
        for (const Slot& slot : mUp->slots[task]) {
            if (slot.isActive && slot.tid == gThread) {
                Record record = taskRecord(31, slot.id);
                record.put(12, mode);
                return send(mFd, record);
            }
        }
    }
    return -1;
}

// --- Anchors -------------------------------------------------------------------------------------

int Model::target(int anchor, size_t element) const {
    if (const int64_t isolated = platform().properties[fake::kLatencySpec + element];
        isolated != 0) {
        return isolated / 100000 == anchor ? static_cast<int>(isolated % 100000) : 0;
    }
    for (const size_t source : {1U, 0U}) {
        const auto found = mUp->anchors[source].find(anchor);
        if (found != mUp->anchors[source].end() && found->second[element] != 0) {
            return found->second[element];
        }
    }
    return 0;
}

int Model::anchor(int anchor, uint32_t serial, int phase) {
    if (!mUp || mUp->invalidAnchors.contains(anchor)) {
        return -1;
    }
    if (phase == 1 && target(anchor, 0) == 0 && target(anchor, 1) == 0) {
        mUp->invalidAnchors.insert(anchor);
        return -1;
    }
    Record record(38);
    record.put(0, anchor);
    record.put(8, phase);
    record.put(16, serial);
    record.put(20, phase == 1 ? target(anchor, 0) : 0);
    record.put(24, target(anchor, 1));
    return send(mFd, record);
}

}  // namespace fuzz
