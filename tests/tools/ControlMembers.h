/*
 * The members of a single-shot control, to be compared.
 */
#pragma once

#include <tuple>

#include "VELKTypes.h"

namespace desk {

inline auto membersOf(const VELKSingleShotControl& control) {
    return std::tie(control.category, control.uclampLevels, control.percentLevel, control.isReset,
                    control.requestValue, control.auxValue, control.releaseRequest, control.auxFlag,
                    control.rangeLevels1, control.rangeLevels2, control.rangeLevels3,
                    control.criticalTaskUclamps, control.limits, control.passFlag,
                    control.sharedFlag, control.extraValues);
}

}  // namespace desk
