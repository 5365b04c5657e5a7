#include "resource/StaticData.h"

#include "foundation/LogGate.h"

bool StaticData::load(const VELKInitParams& params) {
    mpJsonConvertor = VELKJsonConvertor::createInstance(VELK_JSON_SOURCE_PLATFORM, params.scenario,
                                                        params.customization);
    // The customer's data has no variants by customization.
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
    return mpJsonConvertor != nullptr;
}

int32_t StaticData::specValueOf(int task) const {
    VELKJsonConvertor* const convertor = convertorOf(task);
    return convertor != nullptr ? convertor->getTaskSpecValue(task) : kUnknownSpecValue;
}

bool StaticData::isVIPTask(int task) const {
    VELKJsonConvertor* const convertor = convertorOf(task);
    return convertor != nullptr && convertor->isVIPTask(task);
}

std::string StaticData::nameOf(int task) const {
    std::string name;
    if (mpJsonConvertor != nullptr) {
        name = mpJsonConvertor->getTaskName(task);
    }
    if (name.empty() && mpCustomJsonConvertor != nullptr) {
        name = mpCustomJsonConvertor->getTaskName(task);
    }
    return name;
}

uint32_t StaticData::clusterDefaultLevel(int cluster) const {
    return mpJsonConvertor != nullptr ? mpJsonConvertor->getClusterDefaultLevel(cluster) : 0;
}
