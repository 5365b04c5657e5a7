#include "report/Statistics.h"

#include <algorithm>
#include <string_view>

#include "driver/RecordCopy.h"
#include "driver/TaskRuns.h"

namespace desk {

void Statistics::onCall(const PlayedCall& played) {
    countCall(played);
    takeThread(played);
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr) {
            takeCommand(played, command);
        }
    }
}

void Statistics::countCall(const PlayedCall& played) {
    ++mCalls;
    mLastUs = played.call->atUs;
    CallStatistics& operation = mOperations[played.call->info];
    operation.name = played.call->info->name;
    ++operation.calls;
    if (played.result == 0) {
        return;
    }
    if (played.isFailureInjected) {
        ++operation.failedInjected;
    } else if (++operation.failed == 1) {
        operation.firstFailedLine = played.call->line;
    }
}

void Statistics::takeThread(const PlayedCall& played) {
    const size_t number = played.call->thread;
    if (number >= mThreads.size()) {
        mThreads.resize(number + 1);
    }
    Thread& thread = mThreads[number];
    if (thread.tid == 0 && !played.commands.empty()) {
        thread.name = played.thread;
        thread.tid = played.commands.front().tid;
    }
}

void Statistics::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    const void* record = command.record.data();
    switch (command.command->request) {
        case VELK_IOC_INIT:
            mRegistered.clear();  // the ids begin anew
            break;
        case VELK_IOC_TASK_INIT:
            registerTask(played, copyRecord<VELK_TASK_INIT_PARAM>(record));
            break;
        case VELK_IOC_TASK_START:
            if (!isRefusal(command.verdict)) {
                startTask(played, copyRecord<VELK_TASK_PARAM>(record));
            }
            break;
        case VELK_IOC_TASK_END:
            if (!isRefusal(command.verdict)) {
                endTask(played, copyRecord<VELK_TASK_PARAM>(record));
            }
            break;
        case VELK_IOC_CRITICAL_START:
            if (!isRefusal(command.verdict)) {
                mThreads[played.call->thread].spanStartUs = played.call->atUs;
            }
            break;
        default:
            break;
    }
}

void Statistics::registerTask(const PlayedCall& played, const VELK_TASK_INIT_PARAM& record) {
    const std::optional<int32_t>& started = played.call->arguments.task;
    if (!started) {
        return;
    }
    TaskStatistics& task = mTasks[*started];
    task.task = *started;
    task.name = taskNameOf(record);
    task.targetTimeUs = record.targetTime;
    mRegistered[record.uniqueTaskId].statistics = &task;
}

void Statistics::startTask(const PlayedCall& played, const VELK_TASK_PARAM& record) {
    const auto task = mRegistered.find(record.uniqueTaskId);
    if (task == mRegistered.end()) {
        return;
    }
    ++task->second.statistics->starts;
    task->second.runs.push_back({record.tid, played.call->atUs});
}

void Statistics::endTask(const PlayedCall& played, const VELK_TASK_PARAM& record) {
    const auto task = mRegistered.find(record.uniqueTaskId);
    if (task == mRegistered.end()) {
        return;
    }
    TaskStatistics& statistics = *task->second.statistics;
    endRuns(task->second.runs, record.tid, [&](const Run& run) {
        const int64_t runUs = played.call->atUs - run.sinceUs;
        ++statistics.ends;
        statistics.overTarget += runUs > statistics.targetTimeUs ? 1 : 0;
        statistics.totalRunUs += runUs;
        statistics.longestRunUs = std::max(statistics.longestRunUs, runUs);
    });
}

std::vector<CallStatistics> Statistics::byOperation() const {
    std::vector<CallStatistics> result;
    for (const auto& [info, operation] : mOperations) {
        result.push_back(operation);
    }
    return result;
}

const Statistics::Thread* Statistics::findThread(uint32_t tid) const {
    const auto thread = std::find_if(mThreads.begin(), mThreads.end(),
                                     [tid](const Thread& each) { return each.tid == tid; });
    return thread != mThreads.end() ? &*thread : nullptr;
}

std::string Statistics::threadName(uint32_t tid) const {
    const Thread* thread = findThread(tid);
    return thread != nullptr ? thread->name : std::string();
}

int64_t Statistics::spanStartUs(uint32_t tid) const {
    const Thread* thread = findThread(tid);
    return thread != nullptr ? thread->spanStartUs : 0;
}

int64_t Statistics::runStartUs(uint32_t tid, uint32_t uniqueTaskId) const {
    const auto task = mRegistered.find(uniqueTaskId);
    if (task == mRegistered.end()) {
        return 0;
    }
    const std::vector<Run>& runs = task->second.runs;
    const auto run = std::find_if(runs.rbegin(), runs.rend(),
                                  [tid](const Run& each) { return each.tid == tid; });
    return run != runs.rend() ? run->sinceUs : 0;
}

const TaskStatistics* Statistics::findTask(uint32_t uniqueTaskId) const {
    const auto task = mRegistered.find(uniqueTaskId);
    return task != mRegistered.end() ? task->second.statistics : nullptr;
}

}  // namespace desk
