/*
 * The unique task ids of the tasks that head a group. The library's own operations do not use it;
 * exported operations do.
 */
#pragma once

#include <cstdint>
#include <unordered_map>

#include "VELKTypes.h"
#include "foundation/Visibility.h"
#include "resource/StaticData.h"
#include "resource/TaskPair.h"

// Answer of a look-up that finds no group head.
inline constexpr uint32_t INVALID_UNIQUE_TASK_ID = 0xFFFFFFFF;

// Takes no lock; the caller holds the global mutex.
class VELK_INTERNAL GroupHeadTable {
  public:
    // `staticData`: says which task heads the group of another.
    explicit GroupHeadTable(const StaticData& staticData) : mStaticData(staticData) {}

    // Keeps the id of a task as the head of the group that `extra` names. No effect without a
    // group.
    [[gnu::cold]] void record(int task, unsigned uniqueTaskId, const VELKTaskExtraParams& extra);
    // The id of the task that heads the task's group, INVALID_UNIQUE_TASK_ID when there is none.
    [[gnu::cold]] unsigned find(int task, const VELKTaskExtraParams& extra) const;

  private:
    const StaticData& mStaticData;
    // Group index and task enum of the head -> its unique task id.
    std::unordered_map<TaskPair, uint32_t, TaskPairHash> mHeads;
};
