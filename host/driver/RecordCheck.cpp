#include "driver/RecordCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "driver/FieldText.h"
#include "driver/RecordCopy.h"
#include "driver/RecordDecoder.h"

namespace desk {

namespace {

// --- What the table says of a field --------------------------------------------------------------

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

// --- What holds between a field and the caller, or between fields --------------------------------

std::string findCallerFault(const FieldValue& field, uint32_t tid) {
    if (field.name() == "tid" && field.number() != tid) {
        return fmt::format("tid is {}, expected the caller's, {}", field.number(), tid);
    }
    return {};
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

std::string checkAnchor(const VELK_ANCHOR_PARAM& record) {
    if (record.phase == VELK_ANCHOR_END && record.latencyTarget != 0) {
        return fmt::format("latencyTarget is {}, expected 0 in an end", record.latencyTarget);
    }
    return {};
}

}  // namespace

std::string findRecordFault(const VELKCommand& command, const void* record, uint32_t tid) {
    for (const VELKField& field : command.fields) {
        const FieldValue value(field, record);
        std::string fault = value.isText() ? findTextFault(value) : findNumberFault(value);
        if (fault.empty()) {
            fault = findCallerFault(value, tid);
        }
        if (!fault.empty()) {
            return fault;
        }
    }
    switch (command.request) {
        case VELK_IOC_SINGLE_SHOT:
            return checkCriticalTasks(copyRecord<VELK_SINGLE_SHOT_PARAM>(record));
        case VELK_IOC_ANCHOR:
            return checkAnchor(copyRecord<VELK_ANCHOR_PARAM>(record));
        default:
            return {};  // the fields of the other records do not depend on each other
    }
}

}  // namespace desk
