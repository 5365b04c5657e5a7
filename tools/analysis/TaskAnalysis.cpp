#include "analysis/TaskAnalysis.h"

#include <algorithm>
#include <tuple>

#include "driver/RecordCopy.h"
#include "driver/TaskRuns.h"

namespace desk {

void TaskAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    const void* record = command.record.data();
    switch (command.request) {
        case VELK_IOC_INIT:
            mRegistered.clear();  // an init restarts the ids
            break;
        case VELK_IOC_TASK_INIT:
            registerTask(played, copyRecord<VELK_TASK_INIT_PARAM>(record));
            break;
        case VELK_IOC_TASK_START:
            if (!isRefusal(command.verdict)) {
                start(played, copyRecord<VELK_TASK_PARAM>(record));
            }
            break;
        case VELK_IOC_TASK_END:
            if (!isRefusal(command.verdict)) {
                end(played, copyRecord<VELK_TASK_PARAM>(record));
            }
            break;
        default:
            break;
    }
}

void TaskAnalysis::registerTask(const PlayedCall& played, const VELK_TASK_INIT_PARAM& record) {
    const std::optional<int32_t>& started = played.call->arguments.task;
    if (!started) {
        return;
    }
    Task& task = mTasks[*started];
    task.figures.task = *started;
    task.figures.name = taskNameOf(record);
    task.figures.targetTimeUs = record.targetTime;
    mRegistered[record.uniqueTaskId].task = &task;
}

void TaskAnalysis::start(const PlayedCall& played, const VELK_TASK_PARAM& record) {
    const auto registered = mRegistered.find(record.uniqueTaskId);
    if (registered == mRegistered.end()) {
        return;
    }
    Task& task = *registered->second.task;
    std::vector<Run>& runs = registered->second.runs;
    ++task.figures.starts;
    task.threads.insert(played.call->thread);
    if (std::ranges::find(runs, record.tid, &Run::tid) != runs.end()) {
        ++task.figures.repeatedStarts;
    } else {
        runs.push_back({record.tid, played.call->thread, played.call->atUs});
    }
}

void TaskAnalysis::end(const PlayedCall& played, const VELK_TASK_PARAM& record) {
    const auto registered = mRegistered.find(record.uniqueTaskId);
    if (registered == mRegistered.end()) {
        return;
    }
    Task& task = *registered->second.task;
    endRuns(registered->second.runs, record.tid, [&](const Run& run) {
        const int64_t runUs = played.call->atUs - run.sinceUs;
        task.runs.add(runUs);
        task.figures.overTarget += runUs > task.figures.targetTimeUs ? 1 : 0;
        if (mListener != nullptr) {
            mListener->onRun({run.thread, task.figures.task, task.figures.name, run.sinceUs,
                              played.call->atUs, task.figures.targetTimeUs});
        }
    });
}

std::vector<TaskFigures> TaskAnalysis::figures(const ThreadTable& threads) const {
    std::vector<TaskFigures> tasks;
    for (const auto& [number, task] : mTasks) {
        TaskFigures& figures = tasks.emplace_back(task.figures);
        figures.runs = task.runs.figures();
        figures.runBars = task.runs.bars(figures.targetTimeUs);
        for (const uint32_t thread : task.threads) {
            figures.threads.push_back(threads.nameOf(thread));
        }
    }
    return tasks;
}

std::vector<ActiveRun> TaskAnalysis::activeRuns(const ThreadTable& threads) const {
    std::map<std::tuple<uint32_t, uint32_t>, ActiveRun> ordered;
    for (const auto& [id, registered] : mRegistered) {
        const TaskFigures& task = registered.task->figures;
        for (const Run& run : registered.runs) {
            ordered[{run.tid, id}] = {threads.nameOf(run.thread), task.task, task.name,
                                      run.sinceUs};
        }
    }
    std::vector<ActiveRun> runs;
    runs.reserve(ordered.size());
    for (const auto& [place, run] : ordered) {
        runs.push_back(run);
    }
    return runs;
}

}  // namespace desk
