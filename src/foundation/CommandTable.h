/*
 * The twelve commands of the control node: request, name, fields, number and record size. The
 * sender, every decoder and every check of the wire read this one table.
 */
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "foundation/CommandFields.h"
#include "foundation/CommandRecords.h"

// Whether the driver gets every bit of the record as the sender has set it.
template <typename Record>
inline constexpr bool isWireRecord = std::has_unique_object_representations_v<Record>;

struct VELKCommand {
    uint32_t request;
    const char* name;
    std::span<const VELKField> fields;  // without gaps, from the first byte to the last
    uint32_t number = _IOC_NR(request);
    size_t recordSize = _IOC_SIZE(request);
};

// In the order of their numbers, without a gap.
inline constexpr std::array<VELKCommand, 12> VELK_COMMANDS = {{
        {VELK_IOC_INIT, "init", velkfields::kInit},
        {VELK_IOC_TASK_INIT, "taskInit", velkfields::kTaskInit},
        {VELK_IOC_TASK_START, "taskStart", velkfields::kTaskStartOrEnd},
        {VELK_IOC_TASK_END, "taskEnd", velkfields::kTaskStartOrEnd},
        {VELK_IOC_SCENE_CHANGE, "sceneChange", velkfields::kSceneChange},
        {VELK_IOC_UNINIT, "uninit", velkfields::kUninit},
        {VELK_IOC_VSYNC, "vsync", velkfields::kVsync},
        {VELK_IOC_CAM_FPS, "camFps", velkfields::kCamFps},
        {VELK_IOC_SINGLE_SHOT, "singleShot", velkfields::kSingleShot},
        {VELK_IOC_CRITICAL_START, "criticalStart", velkfields::kCriticalStart},
        {VELK_IOC_CRITICAL_END, "criticalEnd", velkfields::kCriticalEnd},
        {VELK_IOC_ANCHOR, "anchor", velkfields::kAnchor},
}};

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
static_assert(std::ranges::all_of(VELK_COMMANDS, isVELKCommandDescribedWhole));

constexpr bool isVELKCommandInItsPlace(const VELKCommand& command) {
    return findVELKCommand(command.request) == &command &&
           command.request == (0x40000000 | command.recordSize << 16 | 'g' << 8 | command.number);
}
static_assert(std::ranges::all_of(VELK_COMMANDS, isVELKCommandInItsPlace));
