#include "tuning/TuningPlatform.h"

#include <mutex>
#include <utility>

#include "VELKJsonConvertor.h"
#include "VELKSettingsProvider.h"

namespace desk {

namespace {

using TuningPointer = std::shared_ptr<const TuningData>;

struct InstalledTuning {
    std::mutex mutex;
    TuningPointer data;
};

// Never destroyed: the library may still ask while the process exits.
InstalledTuning& installed() {
    static InstalledTuning& instance = *new InstalledTuning;
    return instance;
}

TuningPointer installedTuning() {
    InstalledTuning& self = installed();
    const std::lock_guard lock(self.mutex);
    return self.data;
}

// Answers from one variant. Until it is loaded it knows nothing.
class TuningConvertor : public VELKJsonConvertor {
  public:
    TuningConvertor(TuningPointer data, const TuningVariant& variant)
        : mData(std::move(data)), mVariant(&variant) {}

    void reserved3() override {}
    void reserved9() override {}

    int32_t getTaskTargetTime(const int& task) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr ? tuning->targetTimeUs : VELK_UNKNOWN_TASK_TARGET_TIME;
    }

    int32_t getTaskDefaultUclamp(const int& task) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr ? tuning->defaultUclamp : 0;
    }

    int32_t getTaskSpecValue(const int& task) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr ? tuning->specValue : -1;
    }

    bool isVIPTask(const int& task) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr && tuning->isVip;
    }

    int getGroupHeadTask(const int& task, const VELKTaskExtraParams& /*extra*/) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr ? tuning->groupHead : 0;
    }

    uint32_t getClusterLevel(int index) override {
        return elementOrZero(mVariant->clusterLevels, index);
    }

    uint32_t getClusterDefaultLevel(int cluster) override {
        return elementOrZero(mVariant->clusterDefaultLevels, cluster);
    }

    std::string getTaskName(const int& task) override {
        const TaskTuning* tuning = find(task);
        return tuning != nullptr ? tuning->name : std::string();
    }

    void load() override { mIsLoaded = true; }

  private:
    const TaskTuning* find(int task) const {
        if (!mIsLoaded) {
            return nullptr;
        }
        const auto found = mVariant->tasks.find(task);
        return found != mVariant->tasks.end() ? &found->second : nullptr;
    }

    template <size_t kCount>
    uint32_t elementOrZero(const std::array<uint32_t, kCount>& elements, int index) const {
        const auto place = static_cast<size_t>(index);
        return mIsLoaded && place < kCount ? elements[place] : 0;
    }

    TuningPointer mData;
    const TuningVariant* mVariant;
    bool mIsLoaded = false;
};

}  // namespace

void installTuning(TuningPointer data) {
    InstalledTuning& self = installed();
    // The former data goes after the lock is released, because its end may take long.
    const std::lock_guard lock(self.mutex);
    self.data.swap(data);
}

}  // namespace desk

std::unique_ptr<VELKJsonConvertor> VELKJsonConvertor::createInstance(
        const ENUM_VELK_JSON_SOURCE& source, const VELKScenario& scenario,
        const VELKFeatureCustomization& custom) {
    desk::TuningPointer data = desk::installedTuning();
    const bool isCustomer = source == VELK_JSON_SOURCE_CUSTOMER;
    if (data == nullptr || (isCustomer && !data->customer)) {
        return nullptr;
    }
    const desk::TuningSource& tuning = isCustomer ? *data->customer : data->platform;
    const desk::TuningVariant* variant = tuning.findVariant(scenario, custom);
    return variant != nullptr ? std::make_unique<desk::TuningConvertor>(std::move(data), *variant)
                              : nullptr;
}

VELKAnchorSpecMap VELKSettingsProvider::getAnchorSpecMapProvider(
        const VELKFeatureCustomization& custom) {
    const desk::TuningPointer data = desk::installedTuning();
    return data != nullptr ? data->platform.anchorSpecsFor(custom) : VELKAnchorSpecMap();
}

VELKAnchorSpecMap VELKSettingsProvider::getCustAnchorSpecMapProvider(
        const VELKFeatureCustomization& custom) {
    const desk::TuningPointer data = desk::installedTuning();
    return data != nullptr && data->customer ? data->customer->anchorSpecsFor(custom)
                                             : VELKAnchorSpecMap();
}

uint32_t VELKSettingsProvider::getMaxEfficientCPUFreqProvider(int cluster) {
    const desk::TuningPointer data = desk::installedTuning();
    const auto place = static_cast<size_t>(cluster);
    return data != nullptr && place < data->maxEfficientFreqsKhz.size()
                   ? data->maxEfficientFreqsKhz[place]
                   : 0;
}

std::map<int, std::map<VELKScenario, VELKSingleShotControl>>
VELKSettingsProvider::getSingleShotControlProvider() {
    const desk::TuningPointer data = desk::installedTuning();
    return data != nullptr ? data->singleShotControls
                           : std::map<int, std::map<VELKScenario, VELKSingleShotControl>>();
}
