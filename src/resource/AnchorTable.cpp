#include "resource/AnchorTable.h"

#include <cutils/properties.h>

#include <cstdint>
#include <utility>

#include "VELKSettingsProvider.h"
#include "foundation/LogGate.h"

namespace {

// The properties hold anchor * kAnchorFactor + target.
constexpr int32_t kAnchorFactor = 100000;

// An override is for one anchor and sets the target of every other anchor to 0.
int targetInForce(const char* overrideProperty, int anchor, int target) {
    const int32_t forced = property_get_int32(overrideProperty, 0);
    if (forced == 0) {
        return target;
    }
    return forced / kAnchorFactor == anchor ? forced % kAnchorFactor : 0;
}

// The targets of one scenario, empty when the settings have none for it.
std::unordered_map<int, AnchorTable::Targets> takeScenario(VELKAnchorSpecMap specs,
                                                           VELKScenario scenario) {
    return std::move(specs[scenario]);
}

}  // namespace

void AnchorTable::load(const VELKInitParams& params) {
    auto targets = takeScenario(
            VELKSettingsProvider::getAnchorSpecMapProvider(params.customization), params.scenario);
    const auto customer =
            takeScenario(VELKSettingsProvider::getCustAnchorSpecMapProvider(params.customization),
                         params.scenario);
    for (const auto& [anchor, custom] : customer) {
        Targets& merged = targets[anchor];
        for (size_t target = 0; target < merged.size(); ++target) {
            if (custom[target] != 0) {
                merged[target] = custom[target];
            }
        }
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mTargets = std::move(targets);
}

std::optional<AnchorTable::Targets> AnchorTable::validate(int anchor) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (isKnownInvalid(anchor)) {
        return std::nullopt;
    }
    const Targets targets = targetsOf(anchor);
    if (latencyInForce(anchor, targets) == 0 && jitterInForce(anchor, targets) == 0) {
        VELK_LOGD_GATED("invalid anchor: %d", anchor);
        mInvalid.insert(anchor);
        return std::nullopt;
    }
    return targets;
}

std::optional<AnchorTable::Targets> AnchorTable::find(int anchor) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (isKnownInvalid(anchor)) {
        return std::nullopt;
    }
    return targetsOf(anchor);
}

int AnchorTable::latencyInForce(int anchor, const Targets& targets) {
    return targetInForce("vendor.debug.velk.latencySpec", anchor, targets[0]);
}

int AnchorTable::jitterInForce(int anchor, const Targets& targets) {
    return targetInForce("vendor.debug.velk.jitterSpec", anchor, targets[1]);
}

bool AnchorTable::isKnownInvalid(int anchor) const {
    const bool isInvalid = mInvalid.contains(anchor);
    if (isInvalid) {
        VELK_LOGD_GATED("invalid anchor: %d", anchor);
    }
    return isInvalid;
}

AnchorTable::Targets AnchorTable::targetsOf(int anchor) const {
    const auto known = mTargets.find(anchor);
    return known != mTargets.end() ? known->second : Targets{0, 0};
}
