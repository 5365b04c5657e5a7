#include "nodecheck/Record.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace nodecheck {

namespace {

template <typename Fields>
Fields fieldsOf(const Record& record) {
    Fields fields;
    std::memcpy(&fields, record.bytes.data(), sizeof fields);
    return fields;
}

template <typename Fields>
void setFields(Record& record, const Fields& fields) {
    std::memcpy(record.bytes.data(), &fields, sizeof fields);
}

template <typename Number>
int64_t numberAt(const std::byte* place) {
    Number number;
    std::memcpy(&number, place, sizeof number);
    return number;
}

template <typename Number>
void putNumber(std::byte* place, int64_t value) {
    const auto number = static_cast<Number>(value);
    std::memcpy(place, &number, sizeof number);
}

}  // namespace

bool isThreadId(const VELKField& field) {
    return std::string_view(field.name) == "tid";
}

const VELKField* findField(const VELKCommand& command, const char* name) {
    const auto found = std::ranges::find(command.fields, std::string_view(name), &VELKField::name);
    return found != command.fields.end() ? &*found : nullptr;
}

size_t elementsOf(const VELKField& field) {
    return field.type == VELK_TEXT ? 1 : field.count;
}

int64_t valueOf(const Record& record, const VELKField& field, size_t element) {
    const std::byte* const place = record.bytes.data() + field.offset + element * field.elementSize;
    switch (field.type) {
        case VELK_UNSIGNED32:
            return numberAt<uint32_t>(place);
        case VELK_SIGNED32:
            return numberAt<int32_t>(place);
        case VELK_BYTE:
            return numberAt<uint8_t>(place);
        case VELK_TEXT:
            break;
    }
    return static_cast<int64_t>(strnlen(reinterpret_cast<const char*>(place), field.count));
}

void setValue(Record& record, const VELKField& field, size_t element, int64_t value) {
    std::byte* const place = record.bytes.data() + field.offset + element * field.elementSize;
    switch (field.type) {
        case VELK_UNSIGNED32:
            return putNumber<uint32_t>(place, value);
        case VELK_SIGNED32:
            return putNumber<int32_t>(place, value);
        case VELK_BYTE:
            return putNumber<uint8_t>(place, value);
        case VELK_TEXT:
            break;
    }
    std::memset(place, 0, field.count);
    std::memset(place, 'x', static_cast<size_t>(value));
}

int64_t smallestOfType(const VELKField& field) {
    return field.type == VELK_SIGNED32 ? std::numeric_limits<int32_t>::min() : 0;
}

int64_t largestOfType(const VELKField& field) {
    switch (field.type) {
        case VELK_UNSIGNED32:
            return std::numeric_limits<uint32_t>::max();
        case VELK_SIGNED32:
            return std::numeric_limits<int32_t>::max();
        case VELK_BYTE:
            return std::numeric_limits<uint8_t>::max();
        case VELK_TEXT:
            break;
    }
    return static_cast<int64_t>(field.count);
}

Record validRecord(const VELKCommand& command, uint32_t tid) {
    Record record;
    record.command = &command;
    for (const VELKField& field : command.fields) {
        const int64_t value =
                isThreadId(field) ? tid : std::clamp<int64_t>(0, field.smallest, field.largest);
        for (size_t i = 0; i < elementsOf(field); ++i) {
            setValue(record, field, i, value);
        }
    }
    if (command.request == VELK_IOC_SINGLE_SHOT) {
        auto control = fieldsOf<VELK_SINGLE_SHOT_PARAM>(record);
        std::ranges::fill(control.criticalTaskIds, 1U);
        setFields(record, control);
    }
    return record;
}

Record validRecord(uint32_t request, uint32_t tid) {
    return validRecord(*findVELKCommand(request), tid);
}

void fitTogether(Record& record) {
    if (record.command->request == VELK_IOC_SINGLE_SHOT) {
        auto control = fieldsOf<VELK_SINGLE_SHOT_PARAM>(record);
        auto& ids = control.criticalTaskIds;
        const auto used = std::ranges::find(ids, 0U) - std::begin(ids);
        std::fill(ids + used, std::end(ids), 0U);
        std::fill(control.criticalTaskUclamps + used, std::end(control.criticalTaskUclamps), 0U);
        setFields(record, control);
    } else if (record.command->request == VELK_IOC_ANCHOR) {
        auto anchor = fieldsOf<VELK_ANCHOR_PARAM>(record);
        anchor.latencyTarget = anchor.phase == VELK_ANCHOR_END ? 0 : anchor.latencyTarget;
        setFields(record, anchor);
    }
}

bool fitsTogether(const Record& record) {
    Record fitting = record;
    fitTogether(fitting);
    return fitting.bytes == record.bytes;
}

std::string describe(const VELKCommand& command, const VELKField& field, size_t element,
                     int64_t value) {
    if (field.type == VELK_TEXT) {
        return fmt::format("{} {} of {} characters", command.name, field.name, value);
    }
    const std::string place = field.count > 1 ? fmt::format("[{}]", element) : std::string();
    return fmt::format("{} {}{}={}", command.name, field.name, place, value);
}

}  // namespace nodecheck
