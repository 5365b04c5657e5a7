/*
 * The values of a single-shot control that stay active until a reset withdraws them.
 */
#pragma once

#include <cstdint>
#include <tuple>
#include <vector>

#include "VELKTypes.h"

namespace desk {

enum class ControlField : uint8_t {
    PercentLevel,
    UclampLevel,
    TaskUclamp,
    RequestValue,
    Limit,
    SharedFlag,
};

// Field, index or task enum within it, and value; sorted.
using ControlValues = std::vector<std::tuple<ControlField, int32_t, int64_t>>;

ControlValues valuesOf(const VELKSingleShotControl& control);

}  // namespace desk
