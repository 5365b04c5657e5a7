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
    control = VELKSingleShotControl(setting->second.control);
    return true;
}

bool VELKRescManagement::addDefaultSingleShotControl(const VELKSingleShotControl& control) {
    if (VELKSettingsProvider::getSingleShotControlProvider().contains(control.category)) {
        return false;
    }
    size_t categories = 0;
    {
        const std::lock_guard<std::mutex> lock(mSettingsLock);
        const auto [known, isNew] = mDefaultSingleShotTable.try_emplace(control.category, control);
        if (!isNew) {
            ++known->second.notifications;
            return true;
        }
        categories = mDefaultSingleShotTable.size();
    }
    Rollback takeBack([&]() noexcept { takeBackDefaultSingleShotControl(control.category); });
    VELK_LOGD("add default control with category(%d) to table(size=%zu)", control.category,
              categories);
    takeBack.dismiss();
    return true;
}

void VELKRescManagement::takeBackDefaultSingleShotControl(int category) noexcept {
    const std::lock_guard<std::mutex> lock(mSettingsLock);
    const auto known = mDefaultSingleShotTable.find(category);
    if (known != mDefaultSingleShotTable.end() && --known->second.notifications == 0) {
        mDefaultSingleShotTable.erase(known);
    }
}
