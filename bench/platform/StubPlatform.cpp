#include "platform/StubPlatform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <cutils/trace.h>

#include <map>
#include <memory>
#include <string>

#include "ULogger.h"
#include "VELKJsonConvertor.h"
#include "VELKSettingsProvider.h"

uint32_t ULogger::sNormalDetailsMask = 0;
uint32_t ULogger::sDetailsLevel = 0;
uint32_t ULogger::sMode = 0;
ULogger* ULogger::sULogger = nullptr;

namespace {

using Settings = std::map<int, std::map<VELKScenario, VELKSingleShotControl>>;

Settings& settings() {
    static Settings instance;
    return instance;
}

class StubConvertor final : public VELKJsonConvertor {
  public:
    void reserved3() override {}
    void reserved9() override {}
    int32_t getTaskTargetTime(const int& task) override {
        return isKnown(task) ? 16 : VELK_UNKNOWN_TASK_TARGET_TIME;
    }
    int32_t getTaskDefaultUclamp(const int& task) override { return isKnown(task) ? 200 : 0; }
    int32_t getTaskSpecValue(const int& /*task*/) override { return 50; }
    bool isVIPTask(const int& /*task*/) override { return false; }
    int getGroupHeadTask(const int& /*task*/, const VELKTaskExtraParams& /*extra*/) override {
        return 0;
    }
    uint32_t getClusterLevel(int /*index*/) override { return 100; }
    uint32_t getClusterDefaultLevel(int /*cluster*/) override { return 100; }
    std::string getTaskName(const int& /*task*/) override { return "TASK_BENCH"; }
    void load() override {}

  private:
    static bool isKnown(int task) {
        return task >= bench::kFirstTask && task < bench::kFirstTask + bench::kTasks;
    }
};

}  // namespace

void bench::setSettingsEntries(size_t entries) {
    VELKSingleShotControl control;
    control.uclampLevels.assign(8, 300);
    settings().clear();
    for (size_t i = 0; i < entries; ++i) {
        control.category = kFirstCategory + static_cast<int>(i);
        settings()[control.category][VELK_SCENARIO_FALLBACK] = control;
    }
}

std::unique_ptr<VELKJsonConvertor> VELKJsonConvertor::createInstance(
        const ENUM_VELK_JSON_SOURCE& /*source*/, const VELKScenario& /*scenario*/,
        const VELKFeatureCustomization& /*custom*/) {
    return std::make_unique<StubConvertor>();
}

VELKAnchorSpecMap VELKSettingsProvider::getAnchorSpecMapProvider(
        const VELKFeatureCustomization& /*custom*/) {
    return {{VELK_SCENARIO_FALLBACK, {{bench::kAnchor, {100, 20}}}}};
}

VELKAnchorSpecMap VELKSettingsProvider::getCustAnchorSpecMapProvider(
        const VELKFeatureCustomization& /*custom*/) {
    return {};
}

uint32_t VELKSettingsProvider::getMaxEfficientCPUFreqProvider(int /*cluster*/) {
    return 0;
}

std::map<int, std::map<VELKScenario, VELKSingleShotControl>>
VELKSettingsProvider::getSingleShotControlProvider() {
    return settings();
}

extern "C" {

int8_t property_get_bool(const char* /*key*/, int8_t default_value) {
    return default_value;
}

int32_t property_get_int32(const char* /*key*/, int32_t default_value) {
    return default_value;
}

uint64_t atrace_get_enabled_tags() {
    return 0;
}

void atrace_begin_body(const char* /*name*/) {}

void atrace_end_body() {}

int __android_log_print(int /*priority*/, const char* /*tag*/, const char* /*format*/, ...) {
    return 0;
}
}
