/*
 * The library's switches that are system properties: the debug log and the feature itself.
 */
#pragma once

#include <atomic>

#include "foundation/Visibility.h"

// True once the debug log is known to be off, which is the usual case.
VELK_INTERNAL extern std::atomic<bool> gIsDebugLogKnownOff;

// Reads the debug-log property on the first call in this process; never again after that.
VELK_INTERNAL bool askDebugLog();

// Whether messages that need the debug log may pass. Costs one load while it is off.
VELK_INTERNAL inline bool isDebugLogEnabled() {
    return !gIsDebugLogKnownOff.load(std::memory_order_relaxed) && askDebugLog();
}

// Whether the feature is switched on. The property is read on every call.
VELK_INTERNAL bool isVELKEnabled();
