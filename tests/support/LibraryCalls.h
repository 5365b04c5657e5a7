/*
 * The operations as the tests call them.
 */
#pragma once

#include <cstdint>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "support/Recorder.h"

namespace fake {

inline constexpr VELKScenario kScenario{3};
inline constexpr VELKInitParams kParams = {
        .driverParam = 7, .scenario = kScenario, .customization = VELKFeatureCustomization{2}};
inline const void* keyOf(uintptr_t value) {
    return reinterpret_cast<const void*>(value);
}

// The operations as a caller calls them: recorded with their result.
using Machine = VELKMachine;
inline constexpr auto init = [](const VELKInitParams& params = kParams) {
    return call([&] { return Machine::init(params); });
};
inline constexpr auto uninit = [] { return call(Machine::uninit); };
inline constexpr auto start = [](uintptr_t key, int task, const auto&... extra) {
    return call([&] { return Machine::notifyTaskStart(keyOf(key), task, extra...); });
};
inline constexpr auto end = [](uintptr_t key, int task) {
    return call([=] { return Machine::notifyTaskEnd(keyOf(key), task); });
};
inline constexpr auto sceneChange = [](int task, int mode) {
    const auto sent = static_cast<VELKSceneChangeMode>(mode);
    return call([=] { return Machine::notifyTaskSceneChange(task, sent); });
};
// By category or by record.
inline constexpr auto control = [](const auto& what) {
    return call([&] { return Machine::notifySingleShotControl(what); });
};
inline constexpr auto reset = [](auto... category) {
    return call([=] { return Machine::notifyResetSingleShotControl(category...); });
};
inline constexpr auto mark = [](auto... user) {
    return call([=] { return Machine::markCriticalTask(user...); });
};
inline constexpr auto unmark = [] { return call(Machine::unsetCriticalTask); };
inline constexpr auto spanStart = [](int task) {
    return call([=] { return Machine::notifySingleShotCriticalTaskStart(task); });
};
inline constexpr auto spanEnd = [](int task) {
    return call([=] { return Machine::notifySingleShotCriticalTaskEnd(task); });
};
inline constexpr auto anchorStart = [](int anchor, unsigned serial) {
    return call([=] { return Machine::notifyAnchorPointStart(anchor, serial); });
};
inline constexpr auto anchorEnd = [](int anchor, unsigned serial) {
    return call([=] { return Machine::notifyAnchorPointEnd(anchor, serial); });
};
inline constexpr auto vsync = [] { return call(VELKInfoNotifier::notifyVSync); };
inline constexpr auto camFps = [](float fps) {
    return call([=] { return VELKInfoNotifier::notifyCamFps(fps); });
};

}  // namespace fake
