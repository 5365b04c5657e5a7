/*
 * The camera stack's settings: anchor specifications, CPU frequencies and single-shot controls.
 * Every operation returns a copy.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>

#include "VELKTypes.h"

// Scenario -> anchor id -> {latency target, jitter target}.
using VELKAnchorSpecMap =
        std::unordered_map<VELKScenario, std::unordered_map<int, std::array<int, 2>>>;

class VELKSettingsProvider {
  public:
    static VELKAnchorSpecMap getAnchorSpecMapProvider(const VELKFeatureCustomization& custom);
    static VELKAnchorSpecMap getCustAnchorSpecMapProvider(const VELKFeatureCustomization& custom);
    static uint32_t getMaxEfficientCPUFreqProvider(int cluster);
    // Category -> scenario -> control.
    static std::map<int, std::map<VELKScenario, VELKSingleShotControl>>
    getSingleShotControlProvider();
};
