#include "session/Arguments.h"

#include <cutils/properties.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "tuning/CheckedJson.h"

namespace desk {

namespace {

using enum ArgumentType;

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kUint32Max = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMaxAtUs = 1'000'000'000'000'000;  // in nanoseconds it still fits 64 bits
constexpr int64_t kMaxNameLength = 64;
constexpr int64_t kMaxPropertyLength = PROPERTY_VALUE_MAX - 1;

// In the order of the enumeration.
constexpr std::array<ArgumentInfo, kArgumentCount> kArguments = {{
        {Argument::AtUs, "at_us", Integer, 0, kMaxAtUs},
        {Argument::Thread, "thread", Text, 1, kMaxNameLength},
        {Argument::Call, "call", Text, 1, kMaxNameLength},
        {Argument::DriverParam, "driverParam", Integer, 0, kUint32Max},
        {Argument::Scenario, "scenario", Integer, kInt32Min, kInt32Max},
        {Argument::Customization, "customization", Integer, kInt32Min, kInt32Max},
        {Argument::QueryMaxEfficientFreq, "queryMaxEfficientFreq", Boolean},
        {Argument::TuningParam1, "tuningParam1", Integer, kInt32Min, kInt32Max},
        {Argument::TuningParam2, "tuningParam2", Integer, kInt32Min, kInt32Max},
        {Argument::ApplyExtraDefaultControl, "applyExtraDefaultControl", Boolean},
        {Argument::Key, "key", Pointer},
        {Argument::Task, "task", Integer, kInt32Min, kInt32Max},
        {Argument::GroupHead, "groupHead", Integer, kInt32Min, kInt32Max},
        {Argument::ExtraFlag0, "extraFlag0", Integer, 0, 255},
        {Argument::ExtraFlag1, "extraFlag1", Integer, 0, 255},
        {Argument::Mode, "mode", Integer, kInt32Min, kInt32Max},
        {Argument::Category, "category", Integer, kInt32Min, kInt32Max},
        {Argument::Control, "control", Control},
        {Argument::User, "user", Integer, kInt32Min, kInt32Max},
        {Argument::Anchor, "anchor", Integer, kInt32Min, kInt32Max},
        {Argument::Serial, "serial", Integer, 0, kUint32Max},
        {Argument::Fps, "fps", Number},
        {Argument::Name, "name", Text, 1, kMaxNameLength},
        {Argument::Value, "value", Text, 0, kMaxPropertyLength},
}};

constexpr bool isInOrder() {
    size_t place = 0;
    for (const ArgumentInfo& info : kArguments) {
        if (static_cast<size_t>(info.argument) != place++) {
            return false;
        }
    }
    return true;
}
static_assert(isInOrder());

}  // namespace

const ArgumentInfo& argumentInfo(Argument argument) {
    return kArguments[static_cast<size_t>(argument)];
}

const ArgumentInfo* findArgument(std::string_view name) {
    const auto* found =
            std::find_if(kArguments.begin(), kArguments.end(),
                         [name](const ArgumentInfo& info) { return info.name == name; });
    return found != kArguments.end() ? found : nullptr;
}

std::string describeExpected(const ArgumentInfo& info) {
    switch (info.type) {
        case Integer:
            return describeRange(info.min, info.max);
        case Boolean:
            return "true or false";
        case Number:
            return "a number in the range of a 32-bit float";
        case Text:
            return fmt::format("a text of {} to {} printable characters", info.min, info.max);
        case Pointer:
            return "a text such as \"0x55fd\" with at most 16 hexadecimal digits";
        case Control:
            break;
    }
    return "an object with members of a single-shot control";
}

}  // namespace desk
