#include "foundation/LogGate.h"
#include "resource/AnchorTargets.h"
#include "resource/VELKRescManagement.h"

VELKRescManagement::AnchorSpec VELKRescManagement::anchorSpec(int anchor) const {
    const auto spec = mAnchorSpecs.find(anchor);
    return spec != mAnchorSpecs.end() ? spec->second : AnchorSpec{0, 0};
}

std::optional<VELKRescManagement::AnchorSpec> VELKRescManagement::validateAnchor(int anchor) {
    const std::lock_guard<std::mutex> lock(mAnchorLock);
    if (mInvalidAnchors.contains(anchor)) {
        VELK_LOGD_GATED("invalid anchor: %d", anchor);
        return std::nullopt;
    }
    const AnchorSpec spec = anchorSpec(anchor);
    if (getLatencySpec(anchor, spec) == 0 && getJitterSpec(anchor, spec) == 0) {
        VELK_LOGD_GATED("invalid anchor: %d", anchor);
        mInvalidAnchors.insert(anchor);
        return std::nullopt;
    }
    return spec;
}

std::optional<VELKRescManagement::AnchorSpec> VELKRescManagement::anchorSpecUnlessInvalid(
        int anchor) {
    const std::lock_guard<std::mutex> lock(mAnchorLock);
    if (mInvalidAnchors.contains(anchor)) {
        VELK_LOGD_GATED("invalid anchor: %d", anchor);
        return std::nullopt;
    }
    return anchorSpec(anchor);
}
