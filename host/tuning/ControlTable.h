/*
 * The members of a single-shot control as a JSON object has them: name, place in the struct, and
 * the values that tuning data may give them. A session may hold every value of the C++ type.
 */
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <string_view>
#include <variant>
#include <vector>

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"

namespace desk {

using ControlField = std::variant<int32_t VELKSingleShotControl::*, bool VELKSingleShotControl::*,
                                  std::vector<uint32_t> VELKSingleShotControl::*,
                                  std::multimap<int32_t, int32_t> VELKSingleShotControl::*,
                                  std::array<uint32_t, 4> VELKSingleShotControl::*,
                                  std::array<int32_t, 3> VELKSingleShotControl::*>;

struct ControlMember {
    std::string_view name;
    ControlField field;
    // In tuning data: the range of a number, of each level, and of the uclamps of critical tasks.
    int64_t min = std::numeric_limits<int32_t>::min();
    int64_t max = std::numeric_limits<uint32_t>::max();
    bool isInTuning = true;
};

// The most levels that tuning data may give.
inline constexpr size_t kMaxControlLevels = 8;

inline constexpr std::array<ControlMember, 16> kControlMembers = {{
        {.name = "category", .field = &VELKSingleShotControl::category, .isInTuning = false},
        {"uclampLevels", &VELKSingleShotControl::uclampLevels, 0, VELK_MAX_UCLAMP},
        {"percentLevel", &VELKSingleShotControl::percentLevel, -1, 100},
        {.name = "isReset", .field = &VELKSingleShotControl::isReset, .isInTuning = false},
        {"requestValue", &VELKSingleShotControl::requestValue},
        {"auxValue", &VELKSingleShotControl::auxValue},
        {"releaseRequest", &VELKSingleShotControl::releaseRequest},
        {"auxFlag", &VELKSingleShotControl::auxFlag},
        {"rangeLevels1", &VELKSingleShotControl::rangeLevels1, 0, VELK_MAX_UCLAMP},
        {"rangeLevels2", &VELKSingleShotControl::rangeLevels2, 0, VELK_MAX_UCLAMP},
        {"rangeLevels3", &VELKSingleShotControl::rangeLevels3, 0, VELK_MAX_UCLAMP},
        {"criticalTaskUclamps", &VELKSingleShotControl::criticalTaskUclamps, 0, VELK_MAX_UCLAMP},
        {"limits", &VELKSingleShotControl::limits},
        {"passFlag", &VELKSingleShotControl::passFlag},
        {"sharedFlag", &VELKSingleShotControl::sharedFlag},
        {"extraValues", &VELKSingleShotControl::extraValues},
}};

}  // namespace desk
