/*
 * The look-ups of the task identity table that the entry operations make on every frame, inline
 * because their calls would cost as much as they do.
 */
#pragma once

#include "foundation/LogGate.h"
#include "resource/VELKRescManagement.h"

inline unsigned VELKRescManagement::uniqueTaskIdOf(const void* key, int task, bool& isFirstShowUp) {
    const std::lock_guard<std::mutex> lock(mUniqueTaskIdMutex);
    const auto known = mUniqueTaskIds.find({reinterpret_cast<intptr_t>(key), task});
    if (known != mUniqueTaskIds.end()) {
        return known->second;
    }
    return addUniqueTaskId(key, task, isFirstShowUp);
}

inline void VELKRescManagement::logTaskStateSize(int task) {
    const auto taskEnums = static_cast<unsigned long>(mTaskState.size());
    VELK_LOGD("check mTaskState(%d) size: %lu", task, taskEnums);
}

inline void VELKRescManagement::recordTaskStart(int task, unsigned uniqueTaskId, unsigned tid) {
    const std::lock_guard<std::mutex> lock(mTaskStateMutex);
    logTaskStateSize(task);
    const TaskState started = {true, tid, static_cast<int32_t>(uniqueTaskId)};
    if (const auto state = mTaskState.find(task); state != mTaskState.end()) {
        for (TaskState& slot : state->second) {
            if (!slot.isActive) {
                slot = started;
                return;
            }
        }
    }
    addTaskSlot(task, started);
}

inline void VELKRescManagement::recordTaskEnd(int task, unsigned uniqueTaskId) {
    const std::lock_guard<std::mutex> lock(mTaskStateMutex);
    logTaskStateSize(task);
    if (const auto state = mTaskState.find(task); state != mTaskState.end()) {
        for (TaskState& slot : state->second) {
            if (slot.uniqueTaskId == static_cast<int32_t>(uniqueTaskId)) {
                slot.isActive = false;
            }
        }
    }
}

inline unsigned VELKRescManagement::activeTaskIdOf(int task, unsigned tid) {
    const std::lock_guard<std::mutex> lock(mTaskStateMutex);
    if (const auto state = mTaskState.find(task); state != mTaskState.end()) {
        for (const TaskState& slot : state->second) {
            if (slot.tid == tid && slot.isActive) {
                return static_cast<unsigned>(slot.uniqueTaskId);
            }
        }
    }
    return 0;
}
