#include "resource/AnchorTargets.h"

#include <cutils/properties.h>

namespace {

constexpr int32_t kAnchorFactor = 100000;

// A set override names one anchor and its target and switches every other anchor's target off.
int targetInForce(const char* overrideProperty, int anchor, int target) {
    const int32_t forced = property_get_int32(overrideProperty, 0);
    if (forced == 0) {
        return target;
    }
    return forced / kAnchorFactor == anchor ? forced % kAnchorFactor : 0;
}

}  // namespace

int getLatencySpec(int anchor, const std::array<int, 2>& spec) {
    return targetInForce("vendor.debug.velk.latencySpec", anchor, spec[0]);
}

int getJitterSpec(int anchor, const std::array<int, 2>& spec) {
    return targetInForce("vendor.debug.velk.jitterSpec", anchor, spec[1]);
}
