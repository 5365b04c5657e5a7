/*
 * Which threads run which task, and under which unique task id. Each task enum has a list of slots,
 * as many as threads have ever run the task at the same time.
 */
#pragma once

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "foundation/LogGate.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"

// One slot: a thread that runs the task, or ran it. The next start of the task takes over the slot
// of a thread that has ended it.
struct VELK_INTERNAL TaskState {
    bool isActive;
    uint32_t tid;
    int32_t uniqueTaskId;
};

// The operations of every frame are inline: a call would cost as much as the look-up.
class VELK_INTERNAL TaskThreadTable {
  public:
    void start(int task, unsigned uniqueTaskId, unsigned tid) VELK_EXCLUDES(mMutex) {
        const std::lock_guard<std::mutex> lock(mMutex);
        logSize(task);
        const TaskState started = {true, tid, static_cast<int32_t>(uniqueTaskId)};
        if (const auto slots = mTaskState.find(task); slots != mTaskState.end()) {
            for (TaskState& slot : slots->second) {
                if (!slot.isActive) {
                    slot = started;
                    return;
                }
            }
        }
        addSlot(task, started);
    }

    // Ends the task on every thread that runs it under this id.
    void end(int task, unsigned uniqueTaskId) VELK_EXCLUDES(mMutex) {
        const std::lock_guard<std::mutex> lock(mMutex);
        logSize(task);
        if (const auto slots = mTaskState.find(task); slots != mTaskState.end()) {
            for (TaskState& slot : slots->second) {
                if (slot.uniqueTaskId == static_cast<int32_t>(uniqueTaskId)) {
                    slot.isActive = false;
                }
            }
        }
    }

    // The id in the thread's first active slot of the task, 0 when there is none.
    unsigned activeIdOf(int task, unsigned tid) VELK_EXCLUDES(mMutex) {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (const auto slots = mTaskState.find(task); slots != mTaskState.end()) {
            for (const TaskState& slot : slots->second) {
                if (slot.tid == tid && slot.isActive) {
                    return static_cast<unsigned>(slot.uniqueTaskId);
                }
            }
        }
        return 0;
    }

    // Appends the id of every slot of the task, active or not.
    void appendIds(int task, std::vector<unsigned>& out) VELK_EXCLUDES(mMutex);

  private:
    void logSize(int task) const VELK_REQUIRES(mMutex) {
        const auto taskEnums = static_cast<unsigned long>(mTaskState.size());
        VELK_LOGD("check mTaskState(%d) size: %lu", task, taskEnums);
    }
    void addSlot(int task, const TaskState& started) VELK_REQUIRES(mMutex);

    std::unordered_map<int, std::vector<TaskState>> mTaskState VELK_GUARDED_BY(mMutex);
    std::mutex mMutex;
};
