/*
 * The commands of the control node, from the rows of CommandRecords.h.
 */
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "foundation/CommandRecords.h"

// Whether the driver gets every bit of the record as the sender has set it.
template <typename Record>
inline constexpr bool isWireRecord = std::has_unique_object_representations_v<Record>;

struct VELKCommand {
    uint32_t request = 0;
    const char* name = nullptr;
    std::span<const VELKField> fields;
    uint32_t number = 0;
    size_t recordSize = 0;
};

// By their numbers.
inline constexpr auto VELK_COMMANDS = [] {
    std::array<VELKCommand, std::size(VELK_COMMAND_ROWS)> commands;
    for (size_t i = 0; i < commands.size(); ++i) {
        const VELKCommandRow& row = VELK_COMMAND_ROWS[i];
        commands[i] = {row.request,
                       row.name,
                       {row.fields, row.fieldCount},
                       static_cast<uint32_t>(_IOC_NR(row.request)),
                       _IOC_SIZE(row.request)};
    }
    return commands;
}();

// Null when the request is none of the table.
constexpr const VELKCommand* findVELKCommand(uint32_t request) {
    const size_t index = size_t{_IOC_NR(request)} - VELK_COMMANDS.front().number;
    const bool isKnown = index < VELK_COMMANDS.size() && VELK_COMMANDS[index].request == request;
    return isKnown ? &VELK_COMMANDS[index] : nullptr;
}

constexpr bool isVELKCommandDescribedWhole(const VELKCommand& command) {
    size_t next = 0;
    for (const VELKField& field : command.fields) {
        if (field.offset != next) {
            return false;
        }
        next += field.count * field.elementSize;
    }
    return next == command.recordSize;
}
static_assert(std::all_of(VELK_COMMANDS.begin(), VELK_COMMANDS.end(), isVELKCommandDescribedWhole));

constexpr bool isVELKCommandInItsPlace(const VELKCommand& command) {
    return findVELKCommand(command.request) == &command &&
           command.recordSize <= VELK_LARGEST_RECORD &&
           command.request == (0x40000000 | command.recordSize << 16 | 'g' << 8 | command.number);
}
static_assert(std::all_of(VELK_COMMANDS.begin(), VELK_COMMANDS.end(), isVELKCommandInItsPlace));
