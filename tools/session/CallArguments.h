/*
 * The arguments that a call of a session can have: for each its name and its place. What a value
 * may be follows from its type: a whole number has the range of the type, a key is text with the
 * hexadecimal digits of the pointer, a text has the length that stands in its row.
 *
 * Needs nothing but the standard library and the public types, so that small libraries can use it.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "VELKTypes.h"

namespace desk {

// Those of one call; the others have no value. They bear the names of the operation's parameters.
struct CallArguments {
    std::optional<uint32_t> driverParam;
    std::optional<int32_t> scenario;
    std::optional<int32_t> customization;
    std::optional<bool> queryMaxEfficientFreq;
    std::optional<int32_t> tuningParam1;
    std::optional<int32_t> tuningParam2;
    std::optional<bool> applyExtraDefaultControl;
    std::optional<const void*> key;
    std::optional<int32_t> task;
    std::optional<int32_t> groupHead;
    std::optional<uint8_t> extraFlag0;
    std::optional<uint8_t> extraFlag1;
    std::optional<int32_t> mode;
    std::optional<int32_t> category;
    std::unique_ptr<const VELKSingleShotControl> control;
    std::optional<int32_t> user;
    std::optional<int32_t> anchor;
    std::optional<uint32_t> serial;
    std::optional<float> fps;
    std::optional<std::string> name;
    std::optional<std::string> value;
};

using ArgumentField = std::variant<
        std::optional<int32_t> CallArguments::*, std::optional<uint32_t> CallArguments::*,
        std::optional<uint8_t> CallArguments::*, std::optional<bool> CallArguments::*,
        std::optional<float> CallArguments::*, std::optional<const void*> CallArguments::*,
        std::optional<std::string> CallArguments::*,
        std::unique_ptr<const VELKSingleShotControl> CallArguments::*>;

struct ArgumentInfo {
    std::string_view name;
    ArgumentField field;
    size_t minLength = 0;  // of a text, in bytes
    size_t maxLength = 0;
};

// The members that every line has besides its arguments: at_us, thread and call.
inline constexpr int64_t kMaxAtUs = 1'000'000'000'000'000;  // in nanoseconds it still fits 64 bits
inline constexpr size_t kMaxNameLength = 64;                // of threads and properties
inline constexpr size_t kMaxPropertyLength = 91;

inline constexpr std::array<ArgumentInfo, 21> kArguments = {{
        {"driverParam", &CallArguments::driverParam},
        {"scenario", &CallArguments::scenario},
        {"customization", &CallArguments::customization},
        {"queryMaxEfficientFreq", &CallArguments::queryMaxEfficientFreq},
        {"tuningParam1", &CallArguments::tuningParam1},
        {"tuningParam2", &CallArguments::tuningParam2},
        {"applyExtraDefaultControl", &CallArguments::applyExtraDefaultControl},
        {"key", &CallArguments::key},
        {"task", &CallArguments::task},
        {"groupHead", &CallArguments::groupHead},
        {"extraFlag0", &CallArguments::extraFlag0},
        {"extraFlag1", &CallArguments::extraFlag1},
        {"mode", &CallArguments::mode},
        {"category", &CallArguments::category},
        {"control", &CallArguments::control},
        {"user", &CallArguments::user},
        {"anchor", &CallArguments::anchor},
        {"serial", &CallArguments::serial},
        {"fps", &CallArguments::fps},
        {"name", &CallArguments::name, 1, kMaxNameLength},
        {"value", &CallArguments::value, 0, kMaxPropertyLength},
}};

}  // namespace desk
