#include "resource/SingleShotSettings.h"

#include "VELKSettingsProvider.h"
#include "foundation/LogGate.h"
#include "foundation/Rollback.h"

ControlSource SingleShotSettings::find(int category, VELKSingleShotControl& control) {
    auto table = VELKSettingsProvider::getSingleShotControlProvider();
    // A default never stands in for a category that the settings know, even when they hold nothing
    // for the scenario.
    if (table.contains(category)) {
        auto& settings = table.at(category);
        const bool knowsScenario = settings.contains(mScenario);
        if (!knowsScenario && !settings.contains(VELK_SCENARIO_FALLBACK)) {
            return ControlSource::None;
        }
        control = std::move(settings.at(knowsScenario ? mScenario : VELK_SCENARIO_FALLBACK));
        return ControlSource::Settings;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto known = mDefaults.find(category);
    if (known == mDefaults.end()) {
        return ControlSource::None;
    }
    // Copied first, so that running out of memory leaves the caller's control whole.
    control = VELKSingleShotControl(known->second.control);
    return ControlSource::Default;
}

bool SingleShotSettings::isInSettings(int category) {
    return VELKSettingsProvider::getSingleShotControlProvider().contains(category);
}

void SingleShotSettings::addDefault(const VELKSingleShotControl& control) {
    size_t categories = 0;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto [known, isNew] = mDefaults.try_emplace(control.category, control);
        if (!isNew) {
            ++known->second.notifications;
            return;
        }
        categories = mDefaults.size();
    }
    Rollback takeBack([&]() noexcept { takeBackDefault(control.category); });
    VELK_LOGD("add default control with category(%d) to table(size=%zu)", control.category,
              categories);
    takeBack.dismiss();
}

void SingleShotSettings::takeBackDefault(int category) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto known = mDefaults.find(category);
    if (known != mDefaults.end() && --known->second.notifications == 0) {
        mDefaults.erase(known);
    }
}
