/*
 * Which single-shot control a category stands for: the one that the platform's settings hold for
 * the current scenario, or, for a category that they do not know, the first control that a caller
 * handed over for it.
 */
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

#include "VELKTypes.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"

// Where the control of a category was found.
enum class ControlSource { None, Settings, Default };

class VELK_INTERNAL SingleShotSettings {
  public:
    explicit SingleShotSettings(VELKScenario scenario) : mScenario(scenario) {}

    // Copies the control of the category. `control` stays untouched when there is none.
    [[gnu::cold]] ControlSource find(int category, VELKSingleShotControl& control)
            VELK_EXCLUDES(mMutex);

    // Whether the settings know the category. Such a category gets no default.
    [[gnu::cold]] static bool isInSettings(int category);

    // Makes the control the default of its category when the category has none, and counts the
    // notification.
    [[gnu::cold]] void addDefault(const VELKSingleShotControl& control) VELK_EXCLUDES(mMutex);
    // For a counted notification that failed halfway: takes it back. A default whose notifications
    // have all been taken back is removed.
    void takeBackDefault(int category) noexcept VELK_EXCLUDES(mMutex);

  private:
    // A default holds for every scenario.
    struct Default {
        explicit Default(VELKSingleShotControl handedOver) : control(std::move(handedOver)) {}
        VELKSingleShotControl control;
        uint64_t notifications = 1;
    };

    const VELKScenario mScenario;
    std::map<int, Default> mDefaults VELK_GUARDED_BY(mMutex);  // by category
    std::mutex mMutex;
};
