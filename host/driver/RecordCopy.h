/*
 * Typed access to a record that a caller left anywhere in memory.
 */
#pragma once

#include <cstring>

#include "foundation/CommandRecords.h"

namespace desk {

template <typename Record>
Record copyRecord(const void* bytes) {
    static_assert(isWireRecord<Record>);
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

}  // namespace desk
