#include "foundation/LogGate.h"
#include "resource/VELKRescManagement.h"

namespace {

// The map of one scenario, empty when the settings have none for it.
std::unordered_map<int, VELKRescManagement::AnchorSpec> takeScenario(VELKAnchorSpecMap specs,
                                                                     VELKScenario scenario) {
    return std::move(specs[scenario]);
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

    auto anchorSpecs = takeScenario(
            VELKSettingsProvider::getAnchorSpecMapProvider(params.customization), params.scenario);
    auto custAnchorSpecs =
            takeScenario(VELKSettingsProvider::getCustAnchorSpecMapProvider(params.customization),
                         params.scenario);
    const std::lock_guard<std::mutex> lock(mAnchorLock);
    mAnchorSpecs = std::move(anchorSpecs);
    mCustAnchorSpecs = std::move(custAnchorSpecs);
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
