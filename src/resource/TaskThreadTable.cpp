#include "resource/TaskThreadTable.h"

void TaskThreadTable::appendIds(int task, std::vector<unsigned>& out) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (const auto slots = mTaskState.find(task); slots != mTaskState.end()) {
        for (const TaskState& slot : slots->second) {
            out.push_back(static_cast<unsigned>(slot.uniqueTaskId));
        }
    }
}

[[gnu::cold]] void TaskThreadTable::addSlot(int task, const TaskState& started) {
    if (const auto slots = mTaskState.find(task); slots != mTaskState.end()) {
        slots->second.push_back(started);
    } else {
        // With its first slot in place, so that running out of memory leaves no empty list behind.
        mTaskState.emplace(task, std::vector<TaskState>{started});
    }
}
