#include <cutils/properties.h>

#include "foundation/LogGate.h"
#include "foundation/Rollback.h"
#include "resource/TaskIdentityInline.h"

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task,
                                             bool& isFirstShowUp) {
    return uniqueTaskIdOf(key, task, isFirstShowUp);
}

unsigned VELKRescManagement::getUniqueTaskId(const void* key, const int& task) {
    bool isFirstShowUp = false;
    return getUniqueTaskId(key, task, isFirstShowUp);
}

[[gnu::cold]] unsigned VELKRescManagement::addUniqueTaskId(const void* key, int task,
                                                           bool& isFirstShowUp) {
    isFirstShowUp = true;
    const uint32_t id = mNextUniqueTaskId;
    const auto pair = mUniqueTaskIds.emplace(TaskPair{reinterpret_cast<intptr_t>(key), task}, id);
    // Until the caller has the id, a failed dump must leave neither the pair nor its id behind.
    Rollback forget([this, id, position = pair.first]() VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
        mUniqueTaskIds.erase(position);
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

void VELKRescManagement::removeUniqueTaskId(const void* key, const int& task) {
    const std::lock_guard<std::mutex> lock(mUniqueTaskIdMutex);
    mUniqueTaskIds.erase({reinterpret_cast<intptr_t>(key), task});
}

void VELKRescManagement::updateTaskState(const int& task, int uniqueTaskId, unsigned tid,
                                         bool isStart) {
    if (isStart) {
        recordTaskStart(task, static_cast<unsigned>(uniqueTaskId), tid);
    } else {
        recordTaskEnd(task, static_cast<unsigned>(uniqueTaskId));
    }
}

[[gnu::cold]] void VELKRescManagement::addTaskSlot(int task, const TaskState& started) {
    if (const auto state = mTaskState.find(task); state != mTaskState.end()) {
        state->second.push_back(started);
    } else {
        mTaskState.emplace(task, std::vector<TaskState>{started});
    }
}

unsigned VELKRescManagement::findTaskIdFromTid(const int& task, unsigned tid) {
    return activeTaskIdOf(task, tid);
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
        mGroupHeads[{extra.groupHead, task}] = uniqueTaskId;
    }
}

unsigned VELKRescManagement::lookupGroupHead(const int& task, const VELKTaskExtraParams& extra) {
    if (extra.groupHead < 0 || task == 0) {
        return INVALID_UNIQUE_TASK_ID;
    }
    VELKJsonConvertor* const convertor = convertorOf(task);
    const int headTask = convertor != nullptr ? convertor->getGroupHeadTask(task, extra) : 0;
    if (headTask != 0) {
        const auto head = mGroupHeads.find({extra.groupHead, headTask});
        if (head != mGroupHeads.end()) {
            return head->second;
        }
    }
    VELK_LOGD("GroupHead %d is not recorded", headTask);
    return INVALID_UNIQUE_TASK_ID;
}
