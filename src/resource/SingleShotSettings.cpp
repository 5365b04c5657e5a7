#include "foundation/LogGate.h"
#include "foundation/Rollback.h"
#include "resource/VELKRescManagement.h"

namespace {

using SettingsTable = std::map<int, std::map<VELKScenario, VELKSingleShotControl>>;

// The control of a category in a scenario, else in the fallback scenario. False, with `control`
// untouched, when the table has neither.
bool copySetting(const SettingsTable& table, int category, VELKScenario scenario,
                 VELKSingleShotControl& control) {
    const auto settings = table.find(category);
    if (settings == table.end()) {
        return false;
    }
    auto setting = settings->second.find(scenario);
    if (setting == settings->second.end()) {
        setting = settings->second.find(VELK_SCENARIO_FALLBACK);
    }
    if (setting == settings->second.end()) {
        return false;
    }
    // Copied first, so that running out of memory leaves the caller's control whole.
    control = VELKSingleShotControl(setting->second);
    return true;
}

}  // namespace

bool VELKRescManagement::getSingleShotSetting(int category, VELKSingleShotControl& control) {
    const SettingsTable provided = VELKSettingsProvider::getSingleShotControlProvider();
    // A category that the settings know is theirs alone, even where they yield nothing for it.
    if (provided.contains(category)) {
        return copySetting(provided, category, mScenario, control);
    }
    const std::lock_guard<std::mutex> lock(mSettingsLock);
    return copySetting(mDefaultSingleShotTable, category, mScenario, control);
}

bool VELKRescManagement::addDefaultSingleShotControl(const VELKSingleShotControl& control) {
    if (VELKSettingsProvider::getSingleShotControlProvider().contains(control.category)) {
        return false;
    }
    size_t categories = 0;
    {
        const std::lock_guard<std::mutex> lock(mSettingsLock);
        if (mDefaultSingleShotTable.contains(control.category)) {
            return false;
        }
        std::map<VELKScenario, VELKSingleShotControl> settings;
        settings.emplace(VELK_SCENARIO_FALLBACK, control);
        mDefaultSingleShotTable.emplace(control.category, std::move(settings));
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
