/*
 * A single-shot control as a JSON object: its members by their names, the critical tasks as
 * [task, uclamp] pairs. Members that are left out have the control's defaults.
 */
#pragma once

#include "VELKTypes.h"
#include "tuning/CheckedJson.h"

namespace desk {

enum class ControlRule : uint8_t {
    Tuning,   // values that the library accepts; category and isReset do not belong to it
    Recorded  // whatever a caller can pass, also what the library will refuse
};

// Throws JsonFault.
VELKSingleShotControl readControl(const CheckedJson& json, ControlRule rule);

}  // namespace desk
