#include <utility>

#include "foundation/LogGate.h"
#include "foundation/Rollback.h"
#include "resource/VELKRescManagement.h"

bool VELKRescManagement::getSingleShotSetting(int category, VELKSingleShotControl& control) {
    auto table = VELKSettingsProvider::getSingleShotControlProvider();
    // A category that the settings know is theirs alone, even where they yield nothing for it.
    if (table.contains(category)) {
        auto& settings = table.at(category);
        const bool knowsScenario = settings.contains(mScenario);
        if (!knowsScenario && !settings.contains(VELK_SCENARIO_FALLBACK)) {
            return false;
        }
        control = std::move(settings.at(knowsScenario ? mScenario : VELK_SCENARIO_FALLBACK));
        return true;
    }
    const std::lock_guard<std::mutex> lock(mSettingsLock);
    const auto setting = mDefaultSingleShotTable.find(category);
    if (setting == mDefaultSingleShotTable.end()) {
        return false;
    }
    // Copied first, so that running out of memory leaves the caller's control whole.
    control = VELKSingleShotControl(setting->second);
    return true;
}

bool VELKRescManagement::addDefaultSingleShotControl(const VELKSingleShotControl& control) {
    if (VELKSettingsProvider::getSingleShotControlProvider().contains(control.category)) {
        return false;
    }
    size_t categories = 0;
    {
        const std::lock_guard<std::mutex> lock(mSettingsLock);
        if (!mDefaultSingleShotTable.try_emplace(control.category, control).second) {
            return false;
        }
        categories = mDefaultSingleShotTable.size();
    }
    Rollback forget([&]() noexcept { forgetDefaultSingleShotControl(control.category); });
    VELK_LOGD("add default control with category(%d) to table(size=%zu)", control.category,
              categories);
    forget.dismiss();
    return true;
}

void VELKRescManagement::forgetDefaultSingleShotControl(int category) noexcept {
    const std::lock_guard<std::mutex> lock(mSettingsLock);
    mDefaultSingleShotTable.erase(category);
}
