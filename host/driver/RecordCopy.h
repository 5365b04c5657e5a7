/*
 * Typed access to a record that a caller left anywhere in memory.
 */
#pragma once

#include <cstring>
#include <string_view>

#include "foundation/CommandTable.h"

namespace desk {

template <typename Record>
Record copyRecord(const void* bytes) {
    static_assert(isWireRecord<Record>);
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

// The text up to its zero, or the whole field when it has none.
inline std::string_view taskNameOf(const VELK_TASK_INIT_PARAM& record) {
    return {record.taskName, strnlen(record.taskName, sizeof record.taskName)};
}

}  // namespace desk
