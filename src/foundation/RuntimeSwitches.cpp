#include "foundation/RuntimeSwitches.h"

#include <cutils/properties.h>

#include "foundation/ErrnoKeeper.h"
#include "foundation/LogGate.h"

constinit std::atomic<bool> gIsDebugLogKnownOff = false;

[[gnu::cold]] bool askDebugLog() {
    // The message that asks may be about a failed call, and must still be able to show its errno.
    const ErrnoKeeper errnoKeeper;
    static const bool enabled = property_get_bool("vendor.debug.velk.debuglog", 0) != 0;
    gIsDebugLogKnownOff.store(!enabled, std::memory_order_relaxed);
    return enabled;
}

bool isVELKEnabled() {
    const bool forcedOff = property_get_bool("vendor.debug.velk.forceoff", 0) != 0;
    if (forcedOff) {
        VELK_LOGI_GATED("force off velk");
    }
    return !forcedOff;
}
