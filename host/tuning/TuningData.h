/*
 * The figures that a device's tuning services would hold, as plain data.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "VELKSettingsProvider.h"
#include "VELKTypes.h"

namespace desk {

struct TaskTuning {
    std::string name;
    int32_t targetTimeUs = 0;
    int32_t defaultUclamp = 0;
    int32_t specValue = -1;
    bool isVip = false;
    int groupHead = 0;  // task enum, 0 for none
};

// Tasks and levels of a camera use case. A selector that is absent fits every value.
struct TuningVariant {
    std::optional<VELKScenario> scenario;
    std::optional<VELKFeatureCustomization> customization;
    std::array<uint32_t, 8> clusterLevels = {};         // by level position
    std::array<uint32_t, 3> clusterDefaultLevels = {};  // by cluster
    std::unordered_map<int, TaskTuning> tasks;
};

struct AnchorSpecs {
    VELKScenario scenario = {};
    std::optional<VELKFeatureCustomization> customization;
    std::unordered_map<int, std::array<int, 2>> anchors;  // {latency, jitter} in microseconds
};

// What either the platform or the customer brings.
struct TuningSource {
    std::vector<TuningVariant> variants;
    std::vector<AnchorSpecs> anchorSpecs;

    // The variant that fits best: a named scenario counts more than a named customization, and both
    // more than none. Null when no variant fits.
    const TuningVariant* findVariant(VELKScenario scenario,
                                     VELKFeatureCustomization customization) const;
    // Per scenario the specs of that customization, or else those of every customization.
    VELKAnchorSpecMap anchorSpecsFor(VELKFeatureCustomization customization) const;
};

struct TuningData {
    TuningSource platform;
    std::optional<TuningSource> customer;
    std::array<uint32_t, 3> maxEfficientFreqsKhz = {};  // by cluster
    // Category -> scenario -> control.
    std::map<int, std::map<VELKScenario, VELKSingleShotControl>> singleShotControls;
};

}  // namespace desk
