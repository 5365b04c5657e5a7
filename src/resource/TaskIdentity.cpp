#include <cutils/properties.h>

#include "foundation/LogGate.h"
#include "foundation/Rollback.h"
#include "resource/VELKRescManagement.h"

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task,
                                             bool& isFirstShowUp) {
    const std::lock_guard<std::mutex> lock(mUniqueTaskIdMutex);
    if (const auto ids = mUniqueTaskIds.find(reinterpret_cast<intptr_t>(key));
        ids != mUniqueTaskIds.end()) [[likely]] {
        if (const auto known = ids->second.find(task); known != ids->second.end()) [[likely]] {
            return known->second;
        }
    }
    return addUniqueTaskId(key, task, isFirstShowUp);
}

[[gnu::noinline, gnu::cold]] unsigned VELKRescManagement::addUniqueTaskId(const void* key, int task,
                                                                          bool& isFirstShowUp) {
    isFirstShowUp = true;
    const uint32_t id = mNextUniqueTaskId;
    std::unordered_map<int, uint32_t>& ids = mUniqueTaskIds[reinterpret_cast<intptr_t>(key)];
    ids.emplace(task, id);
    // Until the caller has the id, a failed dump must leave neither the pair nor its id behind.
    Rollback forget([&]() VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
        ids.erase(task);
        mUniqueIdToTask.erase(id);
    });
    if (property_get_bool("vendor.debug.velk.dumptasktable.enable", 0) != 0) {
        mUniqueIdToTask[id] = task;
        dumpTaskTable();
    }
    forget.dismiss();
    ++mNextUniqueTaskId;
    return id;
}

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task) {
    bool isFirstShowUp = false;
    return getUniqueTaskId(key, task, isFirstShowUp);
}

void VELKRescManagement::removeUniqueTaskId(const void* key, const int& task) {
    const std::lock_guard<std::mutex> lock(mUniqueTaskIdMutex);
    const auto ids = mUniqueTaskIds.find(reinterpret_cast<intptr_t>(key));
    if (ids != mUniqueTaskIds.end()) {
        ids->second.erase(task);
    }
}

void VELKRescManagement::updateTaskState(const int& task, int uniqueTaskId, unsigned tid,
                                         bool isStart) {
    const std::lock_guard<std::mutex> lock(mTaskStateMutex);
    const auto taskEnums = static_cast<unsigned long>(mTaskState.size());
    VELK_LOGD("check mTaskState(%d) size: %lu", task, taskEnums);
    if (isStart) {
        startTask(task, {true, tid, uniqueTaskId});
    } else {
        endTask(task, uniqueTaskId);
    }
}

void VELKRescManagement::startTask(int task, const TaskState& started) {
    const auto state = mTaskState.find(task);
    if (state == mTaskState.end()) [[unlikely]] {
        mTaskState.emplace(task, std::vector<TaskState>{started});
        return;
    }
    for (TaskState& slot : state->second) {
        if (!slot.isActive) {
            slot = started;
            return;
        }
    }
    state->second.push_back(started);
}

void VELKRescManagement::endTask(int task, int uniqueTaskId) {
    const auto state = mTaskState.find(task);
    if (state == mTaskState.end()) {
        return;
    }
    for (TaskState& slot : state->second) {
        if (slot.uniqueTaskId == uniqueTaskId) {
            slot.isActive = false;
        }
    }
}

unsigned VELKRescManagement::findTaskIdFromTid(const int& task, unsigned tid) {
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

void VELKRescManagement::getUniqueTaskIdsFromTask(const int& task, std::vector<unsigned>& out) {
    const std::lock_guard<std::mutex> lock(mTaskStateMutex);
    if (const auto state = mTaskState.find(task); state != mTaskState.end()) {
        for (const TaskState& slot : state->second) {
            out.push_back(static_cast<unsigned>(slot.uniqueTaskId));
        }
    }
}

void VELKRescManagement::recordGroupHead(const int& task, const unsigned& uniqueTaskId,
                                         const VELKTaskExtraParams& extra) {
    if (extra.groupHead >= 0) {
        mGroupHeads[task][static_cast<uint32_t>(extra.groupHead)] = static_cast<int>(uniqueTaskId);
    }
}

unsigned VELKRescManagement::lookupGroupHead(const int& task, const VELKTaskExtraParams& extra) {
    if (extra.groupHead < 0 || task == 0) {
        return INVALID_UNIQUE_TASK_ID;
    }
    VELKJsonConvertor* const convertor = convertorOf(task);
    const int headTask = convertor != nullptr ? convertor->getGroupHeadTask(task, extra) : 0;
    if (headTask != 0) {
        if (const auto heads = mGroupHeads.find(headTask); heads != mGroupHeads.end()) {
            const auto head = heads->second.find(static_cast<uint32_t>(extra.groupHead));
            if (head != heads->second.end()) {
                return static_cast<unsigned>(head->second);
            }
        }
    }
    VELK_LOGD("GroupHead %d is not recorded", headTask);
    return INVALID_UNIQUE_TASK_ID;
}
