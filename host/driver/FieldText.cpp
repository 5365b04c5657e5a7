#include "driver/FieldText.h"

#include <limits>

namespace desk {

namespace {

const char* elementName(VELKFieldType type) {
    switch (type) {
        case VELK_UNSIGNED32:
            return "u32";
        case VELK_SIGNED32:
            return "s32";
        case VELK_BYTE:
            return "u8";
        case VELK_TEXT:
            break;
    }
    return "char";
}

template <typename Number>
std::string describeRange(int64_t smallest, int64_t largest) {
    using Limits = std::numeric_limits<Number>;
    if (largest == Limits::max()) {
        return smallest == Limits::min() ? "any" : std::to_string(smallest) + " or more";
    }
    if (smallest == largest) {
        return std::to_string(smallest);
    }
    const char* between = largest - smallest == 1 ? " or " : "..";
    return std::to_string(smallest) + between + std::to_string(largest);
}

}  // namespace

std::string describeType(const VELKField& field) {
    std::string type = elementName(field.type);
    if (field.count > 1) {
        type += '[' + std::to_string(field.count) + ']';
    }
    return type;
}

std::string describeValues(const VELKField& field) {
    switch (field.type) {
        case VELK_UNSIGNED32:
            return describeRange<uint32_t>(field.smallest, field.largest);
        case VELK_SIGNED32:
            return describeRange<int32_t>(field.smallest, field.largest);
        case VELK_BYTE:
            return describeRange<uint8_t>(field.smallest, field.largest);
        case VELK_TEXT:
            break;
    }
    return "up to " + std::to_string(field.largest) + " characters";
}

}  // namespace desk
