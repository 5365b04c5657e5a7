/*
 * What a strict driver refuses in a record, judged from its bytes and its caller alone.
 */
#pragma once

#include <cstdint>

#include "driver/RecordDecoder.h"

namespace desk {

// What is at fault, or null. `tid` is the calling thread.
const char* findRecordFault(const RecordLayout& layout, const void* record, uint32_t tid);

}  // namespace desk
