#include <utility>

#include "foundation/LogGate.h"
#include "resource/VELKRescManagement.h"

namespace {

using AnchorSpecs = std::unordered_map<int, VELKRescManagement::AnchorSpec>;

// The map of one scenario, empty when the settings have none for it.
AnchorSpecs takeScenario(VELKAnchorSpecMap specs, VELKScenario scenario) {
    return std::move(specs[scenario]);
}

// A customer's target of 0 leaves the platform's in force.
void overrideAnchorSpecs(AnchorSpecs& specs, const AnchorSpecs& customer) {
    for (const auto& [anchor, custom] : customer) {
        VELKRescManagement::AnchorSpec& spec = specs[anchor];
        for (size_t target = 0; target < spec.size(); ++target) {
            if (custom[target] != 0) {
                spec[target] = custom[target];
            }
        }
    }
}

}  // namespace

bool VELKRescManagement::queryStaticData(const VELKInitParams& params) {
    VELK_LOGD("queryStaticData");

    mpJsonConvertor = VELKJsonConvertor::createInstance(VELK_JSON_SOURCE_PLATFORM, params.scenario,
                                                        params.customization);
    // The customer's data knows no customization of its own.
    mpCustomJsonConvertor = VELKJsonConvertor::createInstance(
            VELK_JSON_SOURCE_CUSTOMER, params.scenario, VELK_CUSTOMIZATION_NONE);

    if (mpJsonConvertor == nullptr) {
        VELK_LOGE("queryStaticData", "mpJsonConvertor is nullptr");
    } else {
        mpJsonConvertor->load();
    }
    if (mpCustomJsonConvertor == nullptr) {
        VELK_LOGE("queryStaticData", "mpCustomJsonConvertor is nullptr");
    } else {
        mpCustomJsonConvertor->load();
    }

    AnchorSpecs specs = takeScenario(
            VELKSettingsProvider::getAnchorSpecMapProvider(params.customization), params.scenario);
    overrideAnchorSpecs(
            specs,
            takeScenario(VELKSettingsProvider::getCustAnchorSpecMapProvider(params.customization),
                         params.scenario));
    const std::lock_guard<std::mutex> lock(mAnchorLock);
    mAnchorSpecs = std::move(specs);
    return mpJsonConvertor != nullptr;
}

int32_t VELKRescManagement::specValueOf(int task) const {
    VELKJsonConvertor* const convertor = convertorOf(task);
    return convertor != nullptr ? convertor->getTaskSpecValue(task) : kUnknownSpecValue;
}

bool VELKRescManagement::isVIPTask(int task) const {
    VELKJsonConvertor* const convertor = convertorOf(task);
    return convertor != nullptr && convertor->isVIPTask(task);
}

std::string VELKRescManagement::taskName(int task) const {
    std::string name;
    if (mpJsonConvertor != nullptr) {
        name = mpJsonConvertor->getTaskName(task);
    }
    if (name.empty() && mpCustomJsonConvertor != nullptr) {
        name = mpCustomJsonConvertor->getTaskName(task);
    }
    return name;
}

uint32_t VELKRescManagement::clusterDefaultLevel(int cluster) const {
    return mpJsonConvertor != nullptr ? mpJsonConvertor->getClusterDefaultLevel(cluster) : 0;
}
