#include "driver/RecordDecoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace desk {

namespace {

using enum FieldType;

constexpr bool kReserved = true;

constexpr RecordField kInitFields[] = {
        {"driverParam", Unsigned32, offsetof(VELK_INIT_PARAM, driverParam)},
        {"clusterLevels", Unsigned32, offsetof(VELK_INIT_PARAM, clusterLevels), 3},
        {"maxEfficientFreqs", Unsigned32, offsetof(VELK_INIT_PARAM, maxEfficientFreqs), 3},
        {"tuningParam1", Signed32, offsetof(VELK_INIT_PARAM, tuningParam1)},
        {"tuningParam2", Signed32, offsetof(VELK_INIT_PARAM, tuningParam2)},
};

constexpr RecordField kTaskInitFields[] = {
        {"uniqueTaskId", Unsigned32, offsetof(VELK_TASK_INIT_PARAM, uniqueTaskId)},
        {"reserved4", Unsigned32, offsetof(VELK_TASK_INIT_PARAM, reserved4), 1, kReserved},
        {"defaultUclamp", Signed32, offsetof(VELK_TASK_INIT_PARAM, defaultUclamp)},
        {"targetTime", Signed32, offsetof(VELK_TASK_INIT_PARAM, targetTime)},
        {"taskSpecValue", Signed32, offsetof(VELK_TASK_INIT_PARAM, taskSpecValue)},
        {"reserved20", Unsigned32, offsetof(VELK_TASK_INIT_PARAM, reserved20), 1, kReserved},
        {"isVIPTask", Byte, offsetof(VELK_TASK_INIT_PARAM, isVIPTask)},
        {"extraFlag0", Byte, offsetof(VELK_TASK_INIT_PARAM, extraFlag0)},
        {"extraFlag1", Byte, offsetof(VELK_TASK_INIT_PARAM, extraFlag1)},
        {"taskName", Text, offsetof(VELK_TASK_INIT_PARAM, taskName), 10},
        {"reserved37", Byte, offsetof(VELK_TASK_INIT_PARAM, reserved37), 3, kReserved},
};

// Of a start and an end.
constexpr RecordField kTaskFields[] = {
        {"tid", Unsigned32, offsetof(VELK_TASK_PARAM, tid)},
        {"uniqueTaskId", Unsigned32, offsetof(VELK_TASK_PARAM, uniqueTaskId)},
        {"reserved8", Unsigned32, offsetof(VELK_TASK_PARAM, reserved8), 2, kReserved},
};

constexpr RecordField kSceneChangeFields[] = {
        {"tid", Unsigned32, offsetof(VELK_TASK_PARAM, tid)},
        {"uniqueTaskId", Unsigned32, offsetof(VELK_TASK_PARAM, uniqueTaskId)},
        {"reserved8", Unsigned32, offsetof(VELK_TASK_PARAM, reserved8), 1, kReserved},
        {"sceneChangeMode", Unsigned32, offsetof(VELK_TASK_PARAM, sceneChangeMode)},
};

constexpr RecordField kUninitFields[] = {
        {"reserved0", Unsigned32, offsetof(VELK_UNINIT_PARAM, reserved0), 1, kReserved},
};

constexpr RecordField kVsyncFields[] = {
        {"reserved0", Unsigned32, offsetof(VELK_VSYNC_PARAM, reserved0), 1, kReserved},
        {"reserved4", Unsigned32, offsetof(VELK_VSYNC_PARAM, reserved4), 1, kReserved},
};

constexpr RecordField kCamFpsFields[] = {
        {"reserved0", Unsigned32, offsetof(VELK_CAM_FPS_PARAM, reserved0), 1, kReserved},
        {"fps", Unsigned32, offsetof(VELK_CAM_FPS_PARAM, fps)},
};

constexpr RecordField kSingleShotFields[] = {
        {"tid", Signed32, offsetof(VELK_SINGLE_SHOT_PARAM, tid)},
        {"uclampLevels", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, uclampLevels), 8},
        {"percentLevel", Signed32, offsetof(VELK_SINGLE_SHOT_PARAM, percentLevel)},
        {"requestValue", Signed32, offsetof(VELK_SINGLE_SHOT_PARAM, requestValue)},
        {"auxValue", Signed32, offsetof(VELK_SINGLE_SHOT_PARAM, auxValue)},
        {"rangeLevels1", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels1), 8},
        {"rangeLevels2", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels2), 8},
        {"rangeLevels3", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels3), 8},
        {"isReset", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, isReset)},
        {"auxFlag", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, auxFlag)},
        {"reserved146", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, reserved146), 2, kReserved},
        {"criticalTaskIds", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, criticalTaskIds), 20},
        {"criticalTaskUclamps", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, criticalTaskUclamps),
         20},
        {"limits", Unsigned32, offsetof(VELK_SINGLE_SHOT_PARAM, limits), 4},
        {"passFlag", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, passFlag)},
        {"sharedFlag", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, sharedFlag)},
        {"reserved326", Byte, offsetof(VELK_SINGLE_SHOT_PARAM, reserved326), 2, kReserved},
        {"extraValues", Signed32, offsetof(VELK_SINGLE_SHOT_PARAM, extraValues), 3},
};

constexpr RecordField kCriticalTaskFields[] = {
        {"tid", Signed32, offsetof(VELK_CRITICAL_TASK_PARAM, tid)},
        {"criticalValue", Signed32, offsetof(VELK_CRITICAL_TASK_PARAM, criticalValue)},
};

constexpr RecordField kAnchorFields[] = {
        {"anchor", Signed32, offsetof(VELK_ANCHOR_PARAM, anchor)},
        {"reserved4", Signed32, offsetof(VELK_ANCHOR_PARAM, reserved4), 1, kReserved},
        {"phase", Signed32, offsetof(VELK_ANCHOR_PARAM, phase)},
        {"reserved12", Signed32, offsetof(VELK_ANCHOR_PARAM, reserved12), 1, kReserved},
        {"serial", Unsigned32, offsetof(VELK_ANCHOR_PARAM, serial)},
        {"latencyTarget", Signed32, offsetof(VELK_ANCHOR_PARAM, latencyTarget)},
        {"jitterTarget", Signed32, offsetof(VELK_ANCHOR_PARAM, jitterTarget)},
};

constexpr const VELKCommand* commandOf(uint32_t request) {
    return std::ranges::find(VELK_COMMANDS, request, &VELKCommand::request);
}

// In the order of the command table.
constexpr std::array<RecordLayout, VELK_COMMANDS.size()> kLayouts = {{
        {commandOf(VELK_IOC_INIT), kInitFields},
        {commandOf(VELK_IOC_TASK_INIT), kTaskInitFields},
        {commandOf(VELK_IOC_TASK_START), kTaskFields},
        {commandOf(VELK_IOC_TASK_END), kTaskFields},
        {commandOf(VELK_IOC_SCENE_CHANGE), kSceneChangeFields},
        {commandOf(VELK_IOC_UNINIT), kUninitFields},
        {commandOf(VELK_IOC_VSYNC), kVsyncFields},
        {commandOf(VELK_IOC_CAM_FPS), kCamFpsFields},
        {commandOf(VELK_IOC_SINGLE_SHOT), kSingleShotFields},
        {commandOf(VELK_IOC_CRITICAL_START), kCriticalTaskFields},
        {commandOf(VELK_IOC_CRITICAL_END), kCriticalTaskFields},
        {commandOf(VELK_IOC_ANCHOR), kAnchorFields},
}};

constexpr size_t elementSize(FieldType type) {
    return type == Unsigned32 || type == Signed32 ? 4 : 1;
}

constexpr bool areLayoutsComplete() {
    for (size_t i = 0; i < kLayouts.size(); ++i) {
        const RecordLayout& layout = kLayouts[i];
        if (layout.command != &VELK_COMMANDS[i]) {
            return false;
        }
        size_t next = 0;
        for (const RecordField& field : layout.fields) {
            if (field.offset != next) {
                return false;
            }
            next += field.count * elementSize(field.type);
        }
        if (next != layout.command->recordSize) {
            return false;
        }
    }
    return true;
}
static_assert(areLayoutsComplete());

template <typename T>
int64_t readAs(const std::byte* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

void describeField(const FieldValue& field, fmt::memory_buffer& out) {
    const auto end = std::back_inserter(out);
    if (field.isText()) {
        fmt::format_to(end, "{}={:?}", field.name(), field.text());
    } else if (!field.isArray()) {
        fmt::format_to(end, "{}={}", field.name(), field.number());
    } else {
        fmt::format_to(end, "{}=[", field.name());
        for (size_t i = 0; i < field.usedSize(); ++i) {
            fmt::format_to(end, "{}{}", i == 0 ? "" : ",", field.number(i));
        }
        out.push_back(']');
    }
}

}  // namespace

const RecordLayout* findRecordLayout(uint32_t request) {
    const size_t index = size_t{_IOC_NR(request)} - VELK_COMMANDS.front().number;
    return index < kLayouts.size() && kLayouts[index].command->request == request ? &kLayouts[index]
                                                                                  : nullptr;
}

int64_t FieldValue::number(size_t index) const {
    const std::byte* place = mBytes + index * elementSize(mField->type);
    switch (mField->type) {
        case Unsigned32:
            return readAs<uint32_t>(place);
        case Signed32:
            return readAs<int32_t>(place);
        case Byte:
        case Text:
            break;
    }
    return readAs<uint8_t>(place);
}

std::string_view FieldValue::text() const {
    const std::string_view whole(reinterpret_cast<const char*>(mBytes), mField->count);
    return whole.substr(0, whole.find('\0'));
}

bool FieldValue::isZero() const {
    const std::byte* end = mBytes + mField->count * elementSize(mField->type);
    return std::all_of(mBytes, end, [](std::byte byte) { return byte == std::byte{0}; });
}

size_t FieldValue::usedSize() const {
    size_t used = mField->count;
    while (used > 0 && number(used - 1) == 0) {
        --used;
    }
    return used;
}

std::string describeRecord(const RecordLayout& layout, const void* record) {
    fmt::memory_buffer out;
    visitRecord(layout, record, [&out](const FieldValue& field) {
        if (field.isReserved() && field.isZero()) {
            return;
        }
        if (out.size() > 0) {
            out.push_back(' ');
        }
        describeField(field, out);
    });
    return fmt::to_string(out);
}

}  // namespace desk
