#include "driver/RecordCheck.h"

#include <algorithm>
#include <iterator>

#include "driver/RecordCopy.h"

namespace desk {

namespace {

template <typename Levels>
bool areLevels(const Levels& levels) {
    return std::all_of(std::begin(levels), std::end(levels),
                       [](uint32_t level) { return level <= VELK_MAX_UCLAMP; });
}

template <typename Values>
bool areZero(const Values& values, size_t first) {
    return std::all_of(std::begin(values) + first, std::end(values),
                       [](auto value) { return value == 0; });
}

const char* checkInit(const VELK_INIT_PARAM& record) {
    if (!areLevels(record.clusterLevels)) {
        return "a cluster level is above 1024";
    }
    if (record.tuningParam1 <= 0 || record.tuningParam2 <= 0) {
        return "a tuning parameter is not above 0";
    }
    return nullptr;
}

const char* checkTaskInit(const VELK_TASK_INIT_PARAM& record) {
    if (record.uniqueTaskId == 0) {
        return "the task id is 0";
    }
    if (record.defaultUclamp < 1 || record.defaultUclamp > VELK_MAX_UCLAMP) {
        return "the default uclamp is outside 1..1024";
    }
    if (record.targetTime < VELK_MIN_TARGET_TIME) {
        return "the target time is below 5";
    }
    if (record.isVIPTask > 1) {
        return "the VIP flag is neither 0 nor 1";
    }
    const size_t length = taskNameOf(record).size();
    if (length == sizeof record.taskName) {
        return "the task name is not terminated";
    }
    if (!areZero(record.taskName, length)) {
        return "the task name has bytes behind its end";
    }
    return nullptr;
}

const char* checkTask(const VELK_TASK_PARAM& record, uint32_t tid) {
    if (record.tid != tid) {
        return "the thread id is not the caller's";
    }
    return record.uniqueTaskId == 0 ? "the task id is 0" : nullptr;
}

// The ids fill their array from the front, and behind them both arrays are zero.
const char* checkCriticalTasks(const VELK_SINGLE_SHOT_PARAM& record) {
    const auto* const firstFree =
            std::find(std::begin(record.criticalTaskIds), std::end(record.criticalTaskIds), 0U);
    const auto used = static_cast<size_t>(firstFree - std::begin(record.criticalTaskIds));
    if (!areZero(record.criticalTaskIds, used) || !areZero(record.criticalTaskUclamps, used)) {
        return "there are critical tasks behind the first free place";
    }
    return areLevels(record.criticalTaskUclamps) ? nullptr : "a critical task uclamp is above 1024";
}

const char* checkSingleShot(const VELK_SINGLE_SHOT_PARAM& record, uint32_t tid) {
    if (static_cast<uint32_t>(record.tid) != tid) {
        return "the thread id is not the caller's";
    }
    if (!areLevels(record.uclampLevels)) {
        return "a uclamp level is above 1024";
    }
    if (!areLevels(record.rangeLevels1) || !areLevels(record.rangeLevels2) ||
        !areLevels(record.rangeLevels3)) {
        return "a range level is above 1024";
    }
    if (record.percentLevel < VELK_PERCENT_NONE_ACTIVE || record.percentLevel > 100) {
        return "the percent level is outside -2..100";
    }
    if (record.isReset > 1 || record.auxFlag > 1 || record.passFlag > 1 || record.sharedFlag > 1) {
        return "a flag is neither 0 nor 1";
    }
    return checkCriticalTasks(record);
}

const char* checkCriticalSpan(const VELK_CRITICAL_TASK_PARAM& record, uint32_t tid, bool isStart) {
    if (static_cast<uint32_t>(record.tid) != tid) {
        return "the thread id is not the caller's";
    }
    if (isStart && (record.criticalValue < 1 || record.criticalValue > VELK_MAX_UCLAMP)) {
        return "the critical value is outside 1..1024";
    }
    return !isStart && record.criticalValue != 0 ? "the critical value of an end is not 0"
                                                 : nullptr;
}

const char* checkAnchor(const VELK_ANCHOR_PARAM& record) {
    if (record.phase != VELK_ANCHOR_START && record.phase != VELK_ANCHOR_END) {
        return "the phase is neither 1 nor 2";
    }
    return record.phase == VELK_ANCHOR_END && record.latencyTarget != 0
                   ? "the latency target of an end is not 0"
                   : nullptr;
}

bool areReservedFieldsZero(const RecordLayout& layout, const void* record) {
    return std::all_of(layout.fields.begin(), layout.fields.end(),
                       [record](const RecordField& field) {
                           return !field.isReserved || FieldValue(field, record).isZero();
                       });
}

}  // namespace

const char* findRecordFault(const RecordLayout& layout, const void* record, uint32_t tid) {
    if (!areReservedFieldsZero(layout, record)) {
        return "a reserved field is not 0";
    }
    switch (layout.command->request) {
        case VELK_IOC_INIT:
            return checkInit(copyRecord<VELK_INIT_PARAM>(record));
        case VELK_IOC_TASK_INIT:
            return checkTaskInit(copyRecord<VELK_TASK_INIT_PARAM>(record));
        case VELK_IOC_TASK_START:
        case VELK_IOC_TASK_END:
        case VELK_IOC_SCENE_CHANGE:
            return checkTask(copyRecord<VELK_TASK_PARAM>(record), tid);
        case VELK_IOC_SINGLE_SHOT:
            return checkSingleShot(copyRecord<VELK_SINGLE_SHOT_PARAM>(record), tid);
        case VELK_IOC_CRITICAL_START:
            return checkCriticalSpan(copyRecord<VELK_CRITICAL_TASK_PARAM>(record), tid, true);
        case VELK_IOC_CRITICAL_END:
            return checkCriticalSpan(copyRecord<VELK_CRITICAL_TASK_PARAM>(record), tid, false);
        case VELK_IOC_ANCHOR:
            return checkAnchor(copyRecord<VELK_ANCHOR_PARAM>(record));
        default:
            return nullptr;  // uninit, vsync and frame rate hold nothing else to judge
    }
}

}  // namespace desk
