#include "resource/SingleShotSettings.h"

#include "VELKSettingsProvider.h"
#include "foundation/LogGate.h"
#include "foundation/Rollback.h"

bool SingleShotSettings::find(int category, VELKSingleShotControl& control) {
    auto table = VELKSettingsProvider::getSingleShotControlProvider();
    // A default never stands in for a category that the settings know, even when they hold nothing
    // for the scenario.
    if (table.contains(category)) {
        auto& settings = table.at(category);
        const bool knowsScenario = settings.contains(mScenario);
        if (!knowsScenario && !settings.contains(VELK_SCENARIO_FALLBACK)) {
            return false;
        }
        control = std::move(settings.at(knowsScenario ? mScenario : VELK_SCENARIO_FALLBACK));
        return true;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto known = mDefaults.find(category);
    if (known == mDefaults.end()) {
        return false;
    }
    // Copied first, so that running out of memory leaves the caller's control whole.
    control = VELKSingleShotControl(known->second.control);
    return true;
}

bool SingleShotSettings::addDefault(const VELKSingleShotControl& control) {
    if (VELKSettingsProvider::getSingleShotControlProvider().contains(control.category)) {
        return false;
    }
    size_t categories = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto [known, isNew] = mDefaults.try_emplace(control.category, control);
        if (!isNew) {
            ++known->second.notifications;
            return true;
        }
        categories = mDefaults.size();
    }
    Rollback takeBack([&]() noexcept { takeBackDefault(control.category); });
    VELK_LOGD("add default control with category(%d) to table(size=%zu)", control.category,
              categories);
    takeBack.dismiss();
    return true;
}

void SingleShotSettings::takeBackDefault(int category) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto known = mDefaults.find(category);
    if (known != mDefaults.end() && --known->second.notifications == 0) {
        mDefaults.erase(known);
    }
}
