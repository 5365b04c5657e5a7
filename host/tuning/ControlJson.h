/*
 * A single-shot control as a JSON object: its members by their names, the critical tasks as
 * [task, uclamp] pairs. Members that are left out have the control's defaults.
 */
#pragma once

#include "VELKTypes.h"
#include "tuning/JsonReader.h"

namespace desk {

enum class ControlRule : uint8_t {
    Tuning,   // values that the library accepts; category and isReset do not belong to it
    Recorded  // whatever a caller can pass, also what the library will refuse
};

// False when a fault was added.
bool readControl(const JsonValue& json, ControlRule rule, VELKSingleShotControl& control);

}  // namespace desk
