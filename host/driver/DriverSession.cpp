#include "driver/DriverSession.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "driver/RecordCopy.h"
#include "driver/TaskRuns.h"

namespace desk {

namespace {

template <typename Runs>
auto findRunIn(Runs& runs, uint32_t tid) {
    return std::find_if(runs.begin(), runs.end(),
                        [tid](const auto& run) { return run.tid == tid; });
}

}  // namespace

const DriverSession::Task* DriverSession::findTask(uint32_t uniqueTaskId) const {
    const auto place = mTasks.find(uniqueTaskId);
    return place != mTasks.end() ? &place->second : nullptr;
}

const DriverSession::Run* DriverSession::findRun(const Task& task, uint32_t tid) {
    const auto run = findRunIn(task.runs, tid);
    return run != task.runs.end() ? &*run : nullptr;
}

DriverSession::Finding DriverSession::inspect(uint32_t request, const void* record) const {
    Finding finding;
    switch (request) {
        case VELK_IOC_INIT:
            return {mIsSenderUp ? "init without an uninit since the last one" : "", false};
        case VELK_IOC_SINGLE_SHOT:  // may come before init
            return inspectControl(copyRecord<VELK_SINGLE_SHOT_PARAM>(record));
        case VELK_IOC_TASK_INIT: {
            const Task* task = findTask(copyRecord<VELK_TASK_INIT_PARAM>(record).uniqueTaskId);
            const bool isKnown = task != nullptr && task->snapshot.isRegistered;
            finding = {isKnown ? "the task is registered already" : "", false};
            break;
        }
        case VELK_IOC_TASK_START:
            finding = inspectStart(copyRecord<VELK_TASK_PARAM>(record));
            break;
        case VELK_IOC_TASK_END:
            finding = inspectEnd(copyRecord<VELK_TASK_PARAM>(record));
            break;
        case VELK_IOC_SCENE_CHANGE:
            finding = inspectSceneChange(copyRecord<VELK_TASK_PARAM>(record));
            break;
        case VELK_IOC_CRITICAL_START:
        case VELK_IOC_CRITICAL_END:
            finding = inspectSpan(copyRecord<VELK_CRITICAL_TASK_PARAM>(record),
                                  request == VELK_IOC_CRITICAL_START);
            break;
        case VELK_IOC_ANCHOR: {
            const auto anchor = copyRecord<VELK_ANCHOR_PARAM>(record);
            const bool hasNoTarget = anchor.phase == VELK_ANCHOR_START &&
                                     anchor.latencyTarget == 0 && anchor.jitterTarget == 0;
            finding = {hasNoTarget ? "the anchor starts without a target" : "", false};
            break;
        }
        default:
            break;
    }
    if (!mIsSenderUp && !finding.isFault) {
        return {"a command before init or after uninit", false};
    }
    return finding;
}

DriverSession::Finding DriverSession::inspectStart(const VELK_TASK_PARAM& record) const {
    const Task* task = findTask(record.uniqueTaskId);
    if (task == nullptr) {
        return {"start of a task that was never registered", true};
    }
    if (!task->snapshot.isRegistered && !task->isRefusalInjected) {
        return {"start of a task whose registration was refused", false};
    }
    const Run* run = findRun(*task, record.tid);
    return {run != nullptr && !run->hasDiverged ? "the thread runs the task already" : "", false};
}

DriverSession::Finding DriverSession::inspectEnd(const VELK_TASK_PARAM& record) const {
    const Task* task = findTask(record.uniqueTaskId);
    if (task == nullptr) {
        return {"end of a task that was never registered", true};
    }
    if (findRun(*task, record.tid) != nullptr) {
        return {};
    }
    return {task->runs.empty() ? "end of a task that does not run"
                               : "end of a task that only other threads run",
            false};
}

DriverSession::Finding DriverSession::inspectSceneChange(const VELK_TASK_PARAM& record) const {
    const Task* task = findTask(record.uniqueTaskId);
    if (task == nullptr) {
        return {"scene change of a task that was never registered", true};
    }
    return {findRun(*task, record.tid) == nullptr ? "scene change of a task that the thread does "
                                                    "not run"
                                                  : "",
            false};
}

DriverSession::Finding DriverSession::inspectControl(const VELK_SINGLE_SHOT_PARAM& record) const {
    const bool areKnown =
            std::all_of(std::begin(record.criticalTaskIds), std::end(record.criticalTaskIds),
                        [this](uint32_t id) { return id == 0 || findTask(id) != nullptr; });
    return {areKnown ? "" : "the control names a task that was never registered", false};
}

DriverSession::Finding DriverSession::inspectSpan(const VELK_CRITICAL_TASK_PARAM& record,
                                                  bool isStart) const {
    const auto span = mSpans.find(static_cast<uint32_t>(record.tid));
    if (isStart) {
        const bool isNested = span != mSpans.end() && !span->second.hasDiverged;
        return {isNested ? "a critical span starts within another of its thread" : "", false};
    }
    return {span == mSpans.end() ? "end of a critical span that is not open" : "", false};
}

void DriverSession::accept(uint32_t request, const void* record) {
    switch (request) {
        case VELK_IOC_INIT:
            begin(true);
            std::ranges::copy(copyRecord<VELK_INIT_PARAM>(record).clusterLevels,
                              mClusterLevels.begin());
            break;
        case VELK_IOC_TASK_INIT:
            registerTask(copyRecord<VELK_TASK_INIT_PARAM>(record));
            break;
        case VELK_IOC_TASK_START:
            startTask(copyRecord<VELK_TASK_PARAM>(record));
            break;
        case VELK_IOC_TASK_END: {
            const auto end = copyRecord<VELK_TASK_PARAM>(record);
            endRuns(mTasks.at(end.uniqueTaskId).runs, end.tid, [](const Run&) {});
            break;
        }
        case VELK_IOC_UNINIT:
            mIsInitialised = false;
            mIsSenderUp = false;
            mClusterLevels = {};
            mControlAtUninit = std::exchange(mControl, {});
            break;
        case VELK_IOC_SINGLE_SHOT:
            takeControl(copyRecord<VELK_SINGLE_SHOT_PARAM>(record));
            break;
        case VELK_IOC_CRITICAL_START: {
            const auto start = copyRecord<VELK_CRITICAL_TASK_PARAM>(record);
            const auto tid = static_cast<uint32_t>(start.tid);
            mSpans[tid] = {{tid, start.criticalValue}, true, false};
            break;
        }
        case VELK_IOC_CRITICAL_END:
            mSpans.erase(static_cast<uint32_t>(copyRecord<VELK_CRITICAL_TASK_PARAM>(record).tid));
            break;
        default:
            break;  // the others change nothing
    }
}

void DriverSession::refuse(uint32_t request, const void* record, bool isInjected) {
    switch (request) {
        case VELK_IOC_INIT:
            begin(false);
            break;
        case VELK_IOC_UNINIT:
            mIsSenderUp = false;
            break;
        case VELK_IOC_TASK_INIT: {
            const auto registration = copyRecord<VELK_TASK_INIT_PARAM>(record);
            Task& task = mTasks[registration.uniqueTaskId];
            if (!task.snapshot.isRegistered) {
                task.snapshot.registration = registration;
            }
            task.isRefusalInjected = isInjected;
            ++mRefusedRegistrations;
            break;
        }
        case VELK_IOC_TASK_START:
        case VELK_IOC_TASK_END:
            if (isInjected) {
                divergeRun(copyRecord<VELK_TASK_PARAM>(record), request == VELK_IOC_TASK_START);
            }
            break;
        case VELK_IOC_CRITICAL_START:
        case VELK_IOC_CRITICAL_END:
            if (isInjected) {
                divergeSpan(copyRecord<VELK_CRITICAL_TASK_PARAM>(record),
                            request == VELK_IOC_CRITICAL_START);
            }
            break;
        default:
            break;
    }
}

void DriverSession::begin(bool isInitialised) {
    mIsInitialised = isInitialised;
    mIsSenderUp = true;
    mTasks.clear();
    mSpans.clear();
    mClusterLevels = {};
    mControl = {};
    mControlAtUninit = {};
}

void DriverSession::registerTask(const VELK_TASK_INIT_PARAM& record) {
    const auto [place, isNew] = mTasks.try_emplace(record.uniqueTaskId);
    TaskSnapshot& task = place->second.snapshot;
    if (!isNew && !task.isRegistered) {
        ++mReplayedRegistrations;
    }
    task.registration = record;
    task.isRegistered = true;
}

void DriverSession::startTask(const VELK_TASK_PARAM& record) {
    Task& task = mTasks.at(record.uniqueTaskId);
    const auto run = findRunIn(task.runs, record.tid);
    if (run == task.runs.end()) {
        task.runs.push_back({record.tid, true, false});
    } else if (run->hasDiverged) {
        *run = {record.tid, true, false};
    }
}

// While the library is down, it does not merge: the record replaces what was there.
void DriverSession::takeControl(const VELK_SINGLE_SHOT_PARAM& record) {
    if (!mIsSenderUp) {
        mControl = {};
    }
    mControl.merge(record, mClusterLevels);
    for (const auto& [id, uclamp] : criticalTasksOf(record)) {
        if (const Task* task = findTask(id)) {
            const int32_t defaultUclamp = task->snapshot.registration.defaultUclamp;
            mControl.mergeTask(id, uclamp, static_cast<uint32_t>(defaultUclamp));
        }
    }
}

void DriverSession::divergeRun(const VELK_TASK_PARAM& record, bool isStart) {
    const auto place = mTasks.find(record.uniqueTaskId);
    if (place == mTasks.end()) {
        return;
    }
    std::vector<Run>& runs = place->second.runs;
    const auto run = findRunIn(runs, record.tid);
    if (run != runs.end()) {
        run->hasDiverged = true;
    } else if (isStart) {
        runs.push_back({record.tid, false, true});
    }
}

void DriverSession::divergeSpan(const VELK_CRITICAL_TASK_PARAM& record, bool isStart) {
    const auto tid = static_cast<uint32_t>(record.tid);
    if (isStart) {
        mSpans[tid].hasDiverged = true;
    } else if (const auto span = mSpans.find(tid); span != mSpans.end()) {
        span->second.hasDiverged = true;
    }
}

void DriverSession::fill(DriverSnapshot& snapshot) const {
    snapshot.isInitialised = mIsInitialised;
    snapshot.control = mControl;
    snapshot.controlAtUninit = mControlAtUninit;
    snapshot.refusedRegistrations = mRefusedRegistrations;
    snapshot.replayedRegistrations = mReplayedRegistrations;
    for (const auto& [id, task] : mTasks) {
        snapshot.tasks.push_back(task.snapshot);
        for (const Run& run : task.runs) {
            if (run.isRunning) {
                snapshot.running.push_back({run.tid, id});
            }
        }
    }
    for (const auto& [tid, span] : mSpans) {
        if (span.isOpen) {
            snapshot.spans.push_back(span.snapshot);
        }
    }
    std::ranges::sort(snapshot.tasks, {},
                      [](const TaskSnapshot& task) { return task.registration.uniqueTaskId; });
    std::ranges::sort(snapshot.running, {}, [](const RunningThread& thread) {
        return std::tuple(thread.tid, thread.uniqueTaskId);
    });
    std::ranges::sort(snapshot.spans, {}, &CriticalSpan::tid);
}

}  // namespace desk
