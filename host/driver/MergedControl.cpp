#include "driver/MergedControl.h"

#include <algorithm>

namespace desk {

void MergedControl::merge(const VELK_SINGLE_SHOT_PARAM& record, const ControlLevels& levels) {
    for (size_t i = 0; i < levels.size(); ++i) {
        if (const uint32_t level = record.uclampLevels[i]; level != 0) {
            uclampLevels[i] = level > levels[i] ? level : 0;
        }
    }
    if (record.percentLevel != VELK_NO_REQUEST) {
        percentLevel = std::max(record.percentLevel, 0);
    }
    if (record.requestValue == VELK_REQUEST_RELEASED) {
        requestValue.reset();
    } else if (record.requestValue != VELK_NO_REQUEST) {
        requestValue = record.requestValue;
    }
    if (record.limits[0] != 0) {
        limit = record.limits[0] == VELK_LIMIT_NONE_ACTIVE ? 0 : record.limits[0];
    }
    if (record.sharedFlag != 0) {
        sharedFlag = record.isReset == 0;  // a reset sends it when nobody holds it any more
    }
}

void MergedControl::mergeTask(uint32_t uniqueTaskId, uint32_t uclamp, uint32_t defaultUclamp) {
    if (uclamp > defaultUclamp) {
        taskUclamps[uniqueTaskId] = uclamp;
    } else {
        taskUclamps.erase(uniqueTaskId);
    }
}

std::map<uint32_t, uint32_t> criticalTasksOf(const VELK_SINGLE_SHOT_PARAM& record) {
    std::map<uint32_t, uint32_t> tasks;
    for (size_t i = 0; i < std::size(record.criticalTaskIds) && record.criticalTaskIds[i] != 0;
         ++i) {
        uint32_t& uclamp = tasks[record.criticalTaskIds[i]];
        uclamp = std::max(uclamp, record.criticalTaskUclamps[i]);
    }
    return tasks;
}

}  // namespace desk
