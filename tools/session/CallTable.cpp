#include "session/CallTable.h"

#include <cutils/properties.h>

#include <algorithm>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"

namespace desk {

namespace {

static_assert(kMaxPropertyLength == PROPERTY_VALUE_MAX - 1);

using Arguments = CallArguments;

// Of an argument that is required, or that is 0 when it is left out.
template <typename T>
T valueOf(const std::optional<T>& argument) {
    return argument.value_or(T{});
}

int runInit(const Arguments& a) {
    VELKInitParams params = {};
    params.driverParam = valueOf(a.driverParam);
    params.scenario = static_cast<VELKScenario>(valueOf(a.scenario));
    params.customization = static_cast<VELKFeatureCustomization>(valueOf(a.customization));
    params.queryMaxEfficientFreq = valueOf(a.queryMaxEfficientFreq);
    params.tuningParam1 = valueOf(a.tuningParam1);
    params.tuningParam2 = valueOf(a.tuningParam2);
    params.applyExtraDefaultControl = valueOf(a.applyExtraDefaultControl);
    return VELKMachine::init(params);
}

int runTaskStart(const Arguments& a) {
    const void* key = valueOf(a.key);
    const int task = valueOf(a.task);
    if (!a.groupHead && !a.extraFlag0 && !a.extraFlag1) {
        return VELKMachine::notifyTaskStart(key, task);
    }
    VELKTaskExtraParams extra;
    extra.groupHead = a.groupHead.value_or(extra.groupHead);
    extra.extraFlag0 = valueOf(a.extraFlag0);
    extra.extraFlag1 = valueOf(a.extraFlag1);
    return VELKMachine::notifyTaskStart(key, task, extra);
}

int runSceneChange(const Arguments& a) {
    return VELKMachine::notifyTaskSceneChange(valueOf(a.task),
                                              static_cast<VELKSceneChangeMode>(valueOf(a.mode)));
}

int runControl(const Arguments& a) {
    return a.control != nullptr ? VELKMachine::notifySingleShotControl(*a.control)
                                : VELKMachine::notifySingleShotControl(valueOf(a.category));
}

int runReset(const Arguments& a) {
    return a.category ? VELKMachine::notifyResetSingleShotControl(*a.category)
                      : VELKMachine::notifyResetSingleShotControl();
}

int runMarkCritical(const Arguments& a) {
    return a.user ? VELKMachine::markCriticalTask(*a.user) : VELKMachine::markCriticalTask();
}

int runSetProperty(const Arguments& a) {
    return property_set(valueOf(a.name).c_str(), valueOf(a.value).c_str());
}

// Calls an operation that is not overloaded with required arguments.
template <auto operation, auto... arguments>
int run(const Arguments& a) {
    return operation(valueOf(a.*arguments)...);
}

constexpr std::array kCalls = {
        CallInfo{
                .name = kInitCall,
                .required = ArgumentList::of("scenario", "customization"),
                .optional = ArgumentList::of("driverParam", "queryMaxEfficientFreq", "tuningParam1",
                                             "tuningParam2", "applyExtraDefaultControl"),
                .run = runInit},
        CallInfo{.name = "uninit", .run = run<VELKMachine::uninit>},
        CallInfo{.name = "notifyTaskStart",
                 .required = ArgumentList::of("key", "task"),
                 .optional = ArgumentList::of("groupHead", "extraFlag0", "extraFlag1"),
                 .run = runTaskStart},
        CallInfo{.name = "notifyTaskEnd",
                 .required = ArgumentList::of("key", "task"),
                 .run = run<VELKMachine::notifyTaskEnd, &Arguments::key, &Arguments::task>},
        CallInfo{.name = "notifyTaskSceneChange",
                 .required = ArgumentList::of("task", "mode"),
                 .run = runSceneChange},
        CallInfo{.name = "notifySingleShotControl",
                 .oneOf = ArgumentList::of("category", "control"),
                 .run = runControl},
        CallInfo{.name = "notifyResetSingleShotControl",
                 .optional = ArgumentList::of("category"),
                 .run = runReset},
        CallInfo{.name = "markCriticalTask",
                 .optional = ArgumentList::of("user"),
                 .run = runMarkCritical},
        CallInfo{.name = "unsetCriticalTask", .run = run<VELKMachine::unsetCriticalTask>},
        CallInfo{.name = "notifySingleShotCriticalTaskStart",
                 .required = ArgumentList::of("task"),
                 .run = run<VELKMachine::notifySingleShotCriticalTaskStart, &Arguments::task>},
        CallInfo{.name = "notifySingleShotCriticalTaskEnd",
                 .required = ArgumentList::of("task"),
                 .run = run<VELKMachine::notifySingleShotCriticalTaskEnd, &Arguments::task>},
        CallInfo{.name = "notifyAnchorPointStart",
                 .required = ArgumentList::of("anchor", "serial"),
                 .run = run<VELKMachine::notifyAnchorPointStart, &Arguments::anchor,
                            &Arguments::serial>},
        CallInfo{.name = "notifyAnchorPointEnd",
                 .required = ArgumentList::of("anchor", "serial"),
                 .run = run<VELKMachine::notifyAnchorPointEnd, &Arguments::anchor,
                            &Arguments::serial>},
        CallInfo{.name = "notifyVSync", .run = run<VELKInfoNotifier::notifyVSync>},
        CallInfo{.name = "notifyCamFps",
                 .required = ArgumentList::of("fps"),
                 .run = run<VELKInfoNotifier::notifyCamFps, &Arguments::fps>},
        CallInfo{.name = "setProperty",
                 .required = ArgumentList::of("name", "value"),
                 .run = runSetProperty},
};

}  // namespace

std::span<const CallInfo> callTable() {
    return kCalls;
}

const CallInfo* findCall(std::string_view name) {
    const auto* found = std::find_if(kCalls.begin(), kCalls.end(),
                                     [name](const CallInfo& info) { return info.name == name; });
    return found != kCalls.end() ? found : nullptr;
}

std::string listCalls() {
    std::string names;
    for (const CallInfo& info : kCalls) {
        names.append(names.empty() ? "" : ", ").append(info.name);
    }
    return names;
}

}  // namespace desk
