#include "driver/RecordCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "driver/FieldText.h"
#include "driver/RecordCopy.h"
#include "driver/RecordDecoder.h"

namespace desk {

namespace {

// --- What the row of a field says
// ------------------------------------------------------------------

bool isValid(const VELKField& field, int64_t value) {
    return value >= field.smallest && value <= field.largest;
}

std::string findTextFault(const FieldValue& text) {
    const size_t length = text.text().size();
    if (!isValid(text.field(), static_cast<int64_t>(length))) {
        return fmt::format("{} has {} characters, expected {}", text.name(), length,
                           describeValues(text.field()));
    }
    if (text.usedSize() != length) {
        return fmt::format("{} has bytes behind its end, expected zeros", text.name());
    }
    return {};
}

std::string findNumberFault(const FieldValue& numbers) {
    const VELKField& field = numbers.field();
    for (size_t i = 0; i < numbers.size(); ++i) {
        const int64_t value = numbers.number(i);
        if (!isValid(field, value)) {
            const std::string place = numbers.isArray() ? fmt::format("[{}]", i) : std::string();
            return fmt::format("{}{} is {}, expected {}", field.name, place, value,
                               describeValues(field));
        }
    }
    return {};
}

std::string findFieldFault(const VELKCommand& command, const void* record) {
    for (const VELKField& field : command.fields) {
        const FieldValue value(field, record);
        std::string fault = value.isText() ? findTextFault(value) : findNumberFault(value);
        if (!fault.empty()) {
            return fault;
        }
    }
    return {};
}

// --- What holds between fields, or between a field and the caller
// ----------------------------------

std::string checkCaller(int64_t recordTid, uint32_t tid) {
    return recordTid == tid ? std::string()
                            : fmt::format("tid is {}, expected the caller's, {}", recordTid, tid);
}

// The ids fill their array from the front, and behind them both arrays are zero. An id can appear
// more than once.
std::string checkCriticalTasks(const VELK_SINGLE_SHOT_PARAM& record) {
    const auto* const ids = record.criticalTaskIds;
    const auto used =
            static_cast<size_t>(std::find(ids, std::end(record.criticalTaskIds), 0U) - ids);
    for (size_t i = used; i < std::size(record.criticalTaskIds); ++i) {
        if (ids[i] != 0) {
            return fmt::format("criticalTaskIds[{}] is {}, expected 0 behind the free place {}", i,
                               ids[i], used);
        }
        if (record.criticalTaskUclamps[i] != 0) {
            return fmt::format("criticalTaskUclamps[{}] is {}, expected 0 in a free place", i,
                               record.criticalTaskUclamps[i]);
        }
    }
    return {};
}

std::string checkSingleShot(const VELK_SINGLE_SHOT_PARAM& record, uint32_t tid) {
    std::string fault = checkCaller(record.tid, tid);
    return fault.empty() ? checkCriticalTasks(record) : fault;
}

std::string checkAnchor(const VELK_ANCHOR_PARAM& record) {
    if (record.phase == VELK_ANCHOR_END && record.latencyTarget != 0) {
        return fmt::format("latencyTarget is {}, expected 0 in an end", record.latencyTarget);
    }
    return {};
}

std::string findRuleFault(uint32_t request, const void* record, uint32_t tid) {
    switch (request) {
        case VELK_IOC_TASK_START:
        case VELK_IOC_TASK_END:
        case VELK_IOC_SCENE_CHANGE:
            return checkCaller(copyRecord<VELK_TASK_PARAM>(record).tid, tid);
        case VELK_IOC_SINGLE_SHOT:
            return checkSingleShot(copyRecord<VELK_SINGLE_SHOT_PARAM>(record), tid);
        case VELK_IOC_CRITICAL_START:
        case VELK_IOC_CRITICAL_END:
            return checkCaller(copyRecord<VELK_CRITICAL_TASK_PARAM>(record).tid, tid);
        case VELK_IOC_ANCHOR:
            return checkAnchor(copyRecord<VELK_ANCHOR_PARAM>(record));
        default:
            return {};  // the rows of the other records say all
    }
}

}  // namespace

std::string findRecordFault(const VELKCommand& command, const void* record, uint32_t tid) {
    std::string fault = findFieldFault(command, record);
    return fault.empty() ? findRuleFault(command.request, record, tid) : fault;
}

}  // namespace desk
