/*
 * The library's switches that are system properties: the debug log and the feature itself.
 */
#pragma once

#include "VELKTypes.h"

// Reads the debug-log property and leaves errno as it was.
VELK_INTERNAL bool readDebugLogProperty();

// Whether messages that are gated by the debug log may pass. The property is read when the first
// such message is considered and never again in this process.
VELK_INTERNAL inline bool isDebugLogEnabled() {
    static const bool enabled = readDebugLogProperty();
    return enabled;
}

// Whether the library may come up. The property is read on every call.
VELK_INTERNAL bool isVELKEnabled();
