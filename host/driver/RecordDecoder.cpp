#include "driver/RecordDecoder.h"

#include <fmt/format.h>

#include <cstring>
#include <iterator>

namespace desk {

namespace {

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

int64_t FieldValue::number(size_t index) const {
    const std::byte* place = mBytes + index * mField->elementSize;
    switch (mField->type) {
        case VELK_UNSIGNED32:
            return readAs<uint32_t>(place);
        case VELK_SIGNED32:
            return readAs<int32_t>(place);
        case VELK_BYTE:
        case VELK_TEXT:
            break;
    }
    return readAs<uint8_t>(place);
}

std::string_view FieldValue::text() const {
    const std::string_view whole(reinterpret_cast<const char*>(mBytes), mField->count);
    return whole.substr(0, whole.find('\0'));
}

size_t FieldValue::usedSize() const {
    size_t used = mField->count;
    while (used > 0 && number(used - 1) == 0) {
        --used;
    }
    return used;
}

std::string describeRecord(const VELKCommand& command, const void* record) {
    fmt::memory_buffer out;
    visitRecord(command, record, [&out](const FieldValue& field) {
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
