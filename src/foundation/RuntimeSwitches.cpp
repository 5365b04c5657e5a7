#include "foundation/RuntimeSwitches.h"

#include <cutils/properties.h>

#include "foundation/ErrnoKeeper.h"
#include "foundation/LogGate.h"

bool readDebugLogProperty() {
    // The first gated message may be about a failed call, whose errno it still has to show.
    const ErrnoKeeper errnoKeeper;
    return property_get_bool("vendor.debug.velk.debuglog", 0) != 0;
}

bool isVELKEnabled() {
    const bool forcedOff = property_get_bool("vendor.debug.velk.forceoff", 0) != 0;
    if (forcedOff) {
        VELK_LOGI_GATED("force off velk");
    }
    return !forcedOff;
}
