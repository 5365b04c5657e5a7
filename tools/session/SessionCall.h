/*
 * One call of a recorded camera session.
 */
#pragma once

#include <cstdint>

#include "session/CallTable.h"

namespace desk {

struct SessionCall {
    uint64_t line = 0;       // of the session file
    uint64_t endOffset = 0;  // of the line, in bytes from the start of the session
    int64_t atUs = 0;
    uint32_t thread = 0;  // 0, 1, 2, ... in the order of first appearance
    const CallInfo* info = nullptr;
    CallArguments arguments;
};

}  // namespace desk
