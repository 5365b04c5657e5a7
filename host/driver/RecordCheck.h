/*
 * What a strict driver refuses in a record, judged from its bytes and its caller alone.
 */
#pragma once

#include <cstdint>
#include <string>

#include "foundation/CommandTable.h"

namespace desk {

// The first field at fault, its value and what was expected; empty, without an allocation, when the
// record is valid. `tid` is the calling thread.
std::string findRecordFault(const VELKCommand& command, const void* record, uint32_t tid);

}  // namespace desk
