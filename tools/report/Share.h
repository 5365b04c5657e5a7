/*
 * Values that both the text and the JSON of a summary derive from its figures.
 */
#pragma once

#include <cstdint>

#include "foundation/CommandTable.h"

namespace desk {

// Of the registrations, in the command table.
inline constexpr size_t kTaskInitPlace = 1;
static_assert(VELK_COMMANDS[kTaskInitPlace].request == VELK_IOC_TASK_INIT);

// 0 when the whole is 0.
constexpr double percentOf(uint64_t part, uint64_t whole) {
    return whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0;
}

}  // namespace desk
