/*
 * The calls that a session can hold: the arguments that they can have, and a row for each call with
 * its name, its arguments and how it is made. velk-replay --calls prints both.
 *
 * Needs nothing but the standard library and the public headers, so that the recorder can use it.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"

namespace desk {

// --- Arguments -----------------------------------------------------------------------------------

// Those of one call; the others have no value. They bear the names of the operation's parameters.
struct CallArguments {
    std::optional<uint32_t> driverParam;
    std::optional<int32_t> scenario;
    std::optional<int32_t> customization;
    std::optional<bool> queryMaxEfficientFreq;
    std::optional<int32_t> tuningParam1;
    std::optional<int32_t> tuningParam2;
    std::optional<bool> applyExtraDefaultControl;
    std::optional<const void*> key;
    std::optional<int32_t> task;
    std::optional<int32_t> groupHead;
    std::optional<uint8_t> extraFlag0;
    std::optional<uint8_t> extraFlag1;
    std::optional<int32_t> mode;
    std::optional<int32_t> category;
    std::unique_ptr<const VELKSingleShotControl> control;
    std::optional<int32_t> user;
    std::optional<int32_t> anchor;
    std::optional<uint32_t> serial;
    std::optional<float> fps;
    std::optional<std::string> name;
    std::optional<std::string> value;
};

using ArgumentField = std::variant<
        std::optional<int32_t> CallArguments::*, std::optional<uint32_t> CallArguments::*,
        std::optional<uint8_t> CallArguments::*, std::optional<bool> CallArguments::*,
        std::optional<float> CallArguments::*, std::optional<const void*> CallArguments::*,
        std::optional<std::string> CallArguments::*,
        std::unique_ptr<const VELKSingleShotControl> CallArguments::*>;

// What a value may be follows from its type: a whole number has the range of the type, a key is
// text with the hexadecimal digits of the pointer.
struct ArgumentInfo {
    std::string_view name;
    ArgumentField field;
    size_t minLength = 0;  // of a text, in bytes
    size_t maxLength = 0;
};

// The members that every line has besides its arguments: at_us, thread and call.
inline constexpr int64_t kMaxAtUs = 1'000'000'000'000'000;  // in nanoseconds it still fits 64 bits
inline constexpr size_t kMaxNameLength = 64;                // of threads and properties
inline constexpr size_t kMaxPropertyLength = 91;

inline constexpr auto kArguments = std::to_array<ArgumentInfo>({
        {"driverParam", &CallArguments::driverParam},
        {"scenario", &CallArguments::scenario},
        {"customization", &CallArguments::customization},
        {"queryMaxEfficientFreq", &CallArguments::queryMaxEfficientFreq},
        {"tuningParam1", &CallArguments::tuningParam1},
        {"tuningParam2", &CallArguments::tuningParam2},
        {"applyExtraDefaultControl", &CallArguments::applyExtraDefaultControl},
        {"key", &CallArguments::key},
        {"task", &CallArguments::task},
        {"groupHead", &CallArguments::groupHead},
        {"extraFlag0", &CallArguments::extraFlag0},
        {"extraFlag1", &CallArguments::extraFlag1},
        {"mode", &CallArguments::mode},
        {"category", &CallArguments::category},
        {"control", &CallArguments::control},
        {"user", &CallArguments::user},
        {"anchor", &CallArguments::anchor},
        {"serial", &CallArguments::serial},
        {"fps", &CallArguments::fps},
        {"name", &CallArguments::name, 1, kMaxNameLength},
        {"value", &CallArguments::value, 0, kMaxPropertyLength},
});

// --- Calls ---------------------------------------------------------------------------------------

// Places in kArguments.
class ArgumentList {
  public:
    constexpr ArgumentList() = default;
    template <typename... Names>
    static consteval ArgumentList of(Names... names) {
        ArgumentList list;
        ((list.mPlaces.at(list.mCount++) = placeOf(names)), ...);
        return list;
    }

    const uint8_t* begin() const { return mPlaces.data(); }
    const uint8_t* end() const { return mPlaces.data() + mCount; }

  private:
    // Does not compile when there is no argument of that name.
    static consteval uint8_t placeOf(std::string_view name) {
        uint8_t place = 0;
        while (kArguments.at(place).name != name) {
            ++place;
        }
        return place;
    }

    std::array<uint8_t, 8> mPlaces = {};
    uint8_t mCount = 0;
};

struct CallInfo {
    std::string_view name;
    ArgumentList required = {};
    ArgumentList oneOf = {};  // exactly one of these
    ArgumentList optional = {};
    // Makes the call with arguments that have been checked. Returns what the operation returned: 0,
    // or -1 when it failed.
    int (*run)(const CallArguments& arguments) = nullptr;
};

// The call that brings the library up.
inline constexpr std::string_view kInitCall = "init";

// Of an argument that is required, or that is 0 when it is left out.
template <typename T>
T valueOf(const std::optional<T>& argument) {
    return argument.value_or(T{});
}

inline int runInit(const CallArguments& a) {
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

inline int runTaskStart(const CallArguments& a) {
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

inline int runSceneChange(const CallArguments& a) {
    return VELKMachine::notifyTaskSceneChange(valueOf(a.task),
                                              static_cast<VELKSceneChangeMode>(valueOf(a.mode)));
}

inline int runControl(const CallArguments& a) {
    return a.control != nullptr ? VELKMachine::notifySingleShotControl(*a.control)
                                : VELKMachine::notifySingleShotControl(valueOf(a.category));
}

inline int runReset(const CallArguments& a) {
    return a.category ? VELKMachine::notifyResetSingleShotControl(*a.category)
                      : VELKMachine::notifyResetSingleShotControl();
}

inline int runMarkCritical(const CallArguments& a) {
    return a.user ? VELKMachine::markCriticalTask(*a.user) : VELKMachine::markCriticalTask();
}

// Calls an operation that is not overloaded with required arguments.
template <auto operation, auto... arguments>
int run(const CallArguments& a) {
    return operation(valueOf(a.*arguments)...);
}
int runSetProperty(const CallArguments& a);

inline std::span<const CallInfo> callTable() {
    static constexpr std::array kCalls = {
            CallInfo{.name = kInitCall,
                     .required = ArgumentList::of("scenario", "customization"),
                     .optional = ArgumentList::of("driverParam", "queryMaxEfficientFreq",
                                                  "tuningParam1", "tuningParam2",
                                                  "applyExtraDefaultControl"),
                     .run = runInit},
            CallInfo{.name = "uninit", .run = run<VELKMachine::uninit>},
            CallInfo{.name = "notifyTaskStart",
                     .required = ArgumentList::of("key", "task"),
                     .optional = ArgumentList::of("groupHead", "extraFlag0", "extraFlag1"),
                     .run = runTaskStart},
            CallInfo{.name = "notifyTaskEnd",
                     .required = ArgumentList::of("key", "task"),
                     .run = run<VELKMachine::notifyTaskEnd, &CallArguments::key,
                                &CallArguments::task>},
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
                     .run = run<VELKMachine::notifySingleShotCriticalTaskStart,
                                &CallArguments::task>},
            CallInfo{
                    .name = "notifySingleShotCriticalTaskEnd",
                    .required = ArgumentList::of("task"),
                    .run = run<VELKMachine::notifySingleShotCriticalTaskEnd, &CallArguments::task>},
            CallInfo{.name = "notifyAnchorPointStart",
                     .required = ArgumentList::of("anchor", "serial"),
                     .run = run<VELKMachine::notifyAnchorPointStart, &CallArguments::anchor,
                                &CallArguments::serial>},
            CallInfo{.name = "notifyAnchorPointEnd",
                     .required = ArgumentList::of("anchor", "serial"),
                     .run = run<VELKMachine::notifyAnchorPointEnd, &CallArguments::anchor,
                                &CallArguments::serial>},
            CallInfo{.name = "notifyVSync", .run = run<VELKInfoNotifier::notifyVSync>},
            CallInfo{.name = "notifyCamFps",
                     .required = ArgumentList::of("fps"),
                     .run = run<VELKInfoNotifier::notifyCamFps, &CallArguments::fps>},
            CallInfo{.name = "setProperty",
                     .required = ArgumentList::of("name", "value"),
                     .run = runSetProperty},
    };
    return kCalls;
}

// Null when there is none of that name.
const CallInfo* findCall(std::string_view name);
// All names, for messages.
std::string listCalls();
// For people: the members of each call, then what each member may hold.
std::string describeCalls();

}  // namespace desk
