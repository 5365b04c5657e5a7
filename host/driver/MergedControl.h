/*
 * What the active single-shot controls ask for, as a driver learns it from their records.
 *
 * A value in a record is merged over all active controls, so it replaces the value before it. A
 * value that the record does not ask for stays. What the library sends unchanged (ranges, auxiliary
 * values, flags other than the shared one) is not kept.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>

#include "foundation/CommandRecords.h"

namespace desk {

using ControlLevels = std::array<uint32_t, std::size(VELK_SINGLE_SHOT_PARAM{}.uclampLevels)>;

struct MergedControl {
    ControlLevels uclampLevels = {};           // 0: not above the level without a control
    int32_t percentLevel = 0;                  // 0: none, else 1..100
    std::optional<int32_t> requestValue;       // that was not released
    std::map<uint32_t, uint32_t> taskUclamps;  // by unique task id, those above the task's default
    uint32_t limit = 0;                        // 0: none
    bool sharedFlag = false;

    bool operator==(const MergedControl&) const = default;
    // True when no active control asks for anything.
    bool isEmpty() const { return *this == MergedControl(); }

    // Takes over the values of a record, without its critical tasks. `levels` are those in
    // force without a control, 0 where unknown.
    void merge(const VELK_SINGLE_SHOT_PARAM& record, const ControlLevels& levels);
    // Takes over the uclamp of a critical task.
    void mergeTask(uint32_t uniqueTaskId, uint32_t uclamp, uint32_t defaultUclamp);
};

// The critical tasks of a record, with the largest uclamp where one is named twice.
std::map<uint32_t, uint32_t> criticalTasksOf(const VELK_SINGLE_SHOT_PARAM& record);

}  // namespace desk
