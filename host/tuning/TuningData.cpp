#include "tuning/TuningData.h"

namespace desk {

namespace {

// How well the variant fits, 0 when it does not.
int rank(const TuningVariant& variant, VELKScenario scenario,
         VELKFeatureCustomization customization) {
    if (variant.scenario.value_or(scenario) != scenario ||
        variant.customization.value_or(customization) != customization) {
        return 0;
    }
    return 1 + (variant.scenario ? 2 : 0) + (variant.customization ? 1 : 0);
}

}  // namespace

const TuningVariant* TuningSource::findVariant(VELKScenario scenario,
                                               VELKFeatureCustomization customization) const {
    const TuningVariant* best = nullptr;
    int bestRank = 0;
    for (const TuningVariant& variant : variants) {
        const int variantRank = rank(variant, scenario, customization);
        if (variantRank > bestRank) {
            best = &variant;
            bestRank = variantRank;
        }
    }
    return best;
}

VELKAnchorSpecMap TuningSource::anchorSpecsFor(VELKFeatureCustomization customization) const {
    VELKAnchorSpecMap result;
    for (const AnchorSpecs& specs : anchorSpecs) {
        if (specs.customization == customization) {
            result[specs.scenario] = specs.anchors;
        } else if (!specs.customization) {
            result.emplace(specs.scenario, specs.anchors);
        }
    }
    return result;
}

}  // namespace desk
