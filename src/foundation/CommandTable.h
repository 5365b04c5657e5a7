/*
 * The twelve commands of the control node and the fields of their records. The sender, the decoder,
 * the check of records, abi/wire.txt and the tables of docs/wire-protocol.md follow from the rows
 * of this one table.
 */
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>

#include "foundation/CommandRecords.h"

// Whether the driver gets every bit of the record as the sender has set it.
template <typename Record>
inline constexpr bool isWireRecord = std::has_unique_object_representations_v<Record>;

// --- Fields --------------------------------------------------------------------------------------

enum class VELKFieldType : uint8_t { Unsigned32, Signed32, Byte, Text };

struct VELKField {
    const char* name;
    VELKFieldType type;
    size_t offset;
    size_t elementSize;
    size_t count;  // elements; of a text, its bytes
    // What a valid record holds in each element; of a text, how long it is without its final zero.
    int64_t smallest;
    int64_t largest;
    bool isReserved;  // always zero
};

namespace velkfields {

struct Values {
    int64_t smallest;
    int64_t largest;
    bool isReserved = false;
};

constexpr Values between(int64_t smallest, int64_t largest) {
    return {smallest, largest};
}

constexpr Values atLeast(int64_t smallest) {
    return {smallest, std::numeric_limits<int64_t>::max()};
}

inline constexpr Values kAny = atLeast(std::numeric_limits<int64_t>::min());
inline constexpr Values kFlag = between(0, 1);
inline constexpr Values kLevel = between(0, VELK_MAX_UCLAMP);
inline constexpr Values kThreadId = atLeast(1);
inline constexpr Values kTaskId = atLeast(1);
inline constexpr Values kZero = between(0, 0);
inline constexpr Values kReserved = {0, 0, true};

template <typename Element>
constexpr VELKFieldType typeOf() = delete;  // records have no elements of other types than these
template <>
constexpr VELKFieldType typeOf<uint32_t>() {
    return VELKFieldType::Unsigned32;
}
template <>
constexpr VELKFieldType typeOf<int32_t>() {
    return VELKFieldType::Signed32;
}
template <>
constexpr VELKFieldType typeOf<uint8_t>() {
    return VELKFieldType::Byte;
}
template <>
constexpr VELKFieldType typeOf<char>() {
    return VELKFieldType::Text;
}

// The row of a member: the values are cut to those that its type can hold.
template <typename Member>
constexpr VELKField describe(const char* name, size_t offset, Values values) {
    using Element = std::remove_all_extents_t<Member>;
    using Limits = std::numeric_limits<Element>;
    constexpr size_t count = std::is_array_v<Member> ? std::extent_v<Member> : 1;
    constexpr bool isText = typeOf<Element>() == VELKFieldType::Text;
    constexpr int64_t smallest = isText ? 0 : int64_t{Limits::min()};
    constexpr int64_t largest = isText ? int64_t{count} - 1 : int64_t{Limits::max()};
    return {name,
            typeOf<Element>(),
            offset,
            sizeof(Element),
            count,
            std::max(values.smallest, smallest),
            std::min(values.largest, largest),
            values.isReserved};
}

// A member has no name at run time but the one that the preprocessor makes of it.
#define VELK_FIELD(Record, member, values) \
    describe<decltype(Record::member)>(#member, offsetof(Record, member), values)

inline constexpr VELKField kInit[] = {
        VELK_FIELD(VELK_INIT_PARAM, driverParam, kAny),
        VELK_FIELD(VELK_INIT_PARAM, clusterLevels, kLevel),
        VELK_FIELD(VELK_INIT_PARAM, maxEfficientFreqs, kAny),
        VELK_FIELD(VELK_INIT_PARAM, tuningParam1, atLeast(1)),
        VELK_FIELD(VELK_INIT_PARAM, tuningParam2, atLeast(1)),
};

inline constexpr VELKField kTaskInit[] = {
        VELK_FIELD(VELK_TASK_INIT_PARAM, uniqueTaskId, kTaskId),
        VELK_FIELD(VELK_TASK_INIT_PARAM, reserved4, kReserved),
        VELK_FIELD(VELK_TASK_INIT_PARAM, defaultUclamp, between(1, VELK_MAX_UCLAMP)),
        VELK_FIELD(VELK_TASK_INIT_PARAM, targetTime, atLeast(VELK_MIN_TARGET_TIME)),
        VELK_FIELD(VELK_TASK_INIT_PARAM, taskSpecValue, kAny),
        VELK_FIELD(VELK_TASK_INIT_PARAM, reserved20, kReserved),
        VELK_FIELD(VELK_TASK_INIT_PARAM, isVIPTask, kFlag),
        VELK_FIELD(VELK_TASK_INIT_PARAM, extraFlag0, kAny),
        VELK_FIELD(VELK_TASK_INIT_PARAM, extraFlag1, kAny),
        VELK_FIELD(VELK_TASK_INIT_PARAM, taskName, kAny),
        VELK_FIELD(VELK_TASK_INIT_PARAM, reserved37, kReserved),
};

inline constexpr VELKField kTaskStartOrEnd[] = {
        VELK_FIELD(VELK_TASK_PARAM, tid, kThreadId),
        VELK_FIELD(VELK_TASK_PARAM, uniqueTaskId, kTaskId),
        VELK_FIELD(VELK_TASK_PARAM, reserved8, kReserved),
        VELK_FIELD(VELK_TASK_PARAM, sceneChangeMode, kReserved),
};

inline constexpr VELKField kSceneChange[] = {
        VELK_FIELD(VELK_TASK_PARAM, tid, kThreadId),
        VELK_FIELD(VELK_TASK_PARAM, uniqueTaskId, kTaskId),
        VELK_FIELD(VELK_TASK_PARAM, reserved8, kReserved),
        VELK_FIELD(VELK_TASK_PARAM, sceneChangeMode, kAny),
};

inline constexpr VELKField kUninit[] = {
        VELK_FIELD(VELK_UNINIT_PARAM, reserved0, kReserved),
};

inline constexpr VELKField kVsync[] = {
        VELK_FIELD(VELK_VSYNC_PARAM, reserved0, kReserved),
        VELK_FIELD(VELK_VSYNC_PARAM, reserved4, kReserved),
};

inline constexpr VELKField kCamFps[] = {
        VELK_FIELD(VELK_CAM_FPS_PARAM, reserved0, kReserved),
        VELK_FIELD(VELK_CAM_FPS_PARAM, fps, kAny),
};

inline constexpr VELKField kSingleShot[] = {
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, tid, kThreadId),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uclampLevels, kLevel),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, percentLevel, between(VELK_PERCENT_NONE_ACTIVE, 100)),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, requestValue, kAny),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, auxValue, kAny),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, rangeLevels1, kLevel),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, rangeLevels2, kLevel),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, rangeLevels3, kLevel),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, isReset, kFlag),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, auxFlag, kFlag),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, reserved146, kReserved),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, criticalTaskIds, kAny),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, criticalTaskUclamps, kLevel),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, limits, kAny),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, passFlag, kFlag),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, sharedFlag, kFlag),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, reserved326, kReserved),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, extraValues, kAny),
};

inline constexpr VELKField kCriticalStart[] = {
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, tid, kThreadId),
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, criticalValue, between(1, VELK_MAX_UCLAMP)),
};

inline constexpr VELKField kCriticalEnd[] = {
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, tid, kThreadId),
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, criticalValue, kZero),
};

inline constexpr VELKField kAnchor[] = {
        VELK_FIELD(VELK_ANCHOR_PARAM, anchor, kAny),
        VELK_FIELD(VELK_ANCHOR_PARAM, reserved4, kReserved),
        VELK_FIELD(VELK_ANCHOR_PARAM, phase, between(VELK_ANCHOR_START, VELK_ANCHOR_END)),
        VELK_FIELD(VELK_ANCHOR_PARAM, reserved12, kReserved),
        VELK_FIELD(VELK_ANCHOR_PARAM, serial, kAny),
        VELK_FIELD(VELK_ANCHOR_PARAM, latencyTarget, kAny),
        VELK_FIELD(VELK_ANCHOR_PARAM, jitterTarget, kAny),
};

#undef VELK_FIELD

}  // namespace velkfields

// --- Commands ------------------------------------------------------------------------------------

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
static_assert(std::all_of(VELK_COMMANDS.begin(), VELK_COMMANDS.end(), isVELKCommandDescribedWhole));

constexpr bool isVELKCommandInItsPlace(const VELKCommand& command) {
    return findVELKCommand(command.request) == &command &&
           command.request == (0x40000000 | command.recordSize << 16 | 'g' << 8 | command.number);
}
static_assert(std::all_of(VELK_COMMANDS.begin(), VELK_COMMANDS.end(), isVELKCommandInItsPlace));
