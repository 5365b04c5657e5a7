#include "session/CallTable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace desk {

namespace {

using enum Argument;

Operation makeInit(const Arguments& arguments) {
    InitCall call;
    call.params.driverParam = arguments.integer<uint32_t>(DriverParam);
    call.params.scenario = arguments.integer<VELKScenario>(Scenario);
    call.params.customization = arguments.integer<VELKFeatureCustomization>(Customization);
    call.params.queryMaxEfficientFreq = arguments.boolean(QueryMaxEfficientFreq);
    call.params.tuningParam1 = arguments.integer(TuningParam1);
    call.params.tuningParam2 = arguments.integer(TuningParam2);
    call.params.applyExtraDefaultControl = arguments.boolean(ApplyExtraDefaultControl);
    return call;
}

Operation makeTaskStart(const Arguments& arguments) {
    TaskStartCall call = {arguments.integer<uint64_t>(Key), arguments.integer(Task), std::nullopt};
    if (arguments.has(GroupHead) || arguments.has(ExtraFlag0) || arguments.has(ExtraFlag1)) {
        VELKTaskExtraParams extra;
        extra.groupHead = arguments.optional(GroupHead).value_or(extra.groupHead);
        extra.extraFlag0 = arguments.integer<uint8_t>(ExtraFlag0);
        extra.extraFlag1 = arguments.integer<uint8_t>(ExtraFlag1);
        call.extra = extra;
    }
    return call;
}

Operation makeTaskEnd(const Arguments& arguments) {
    return TaskEndCall{arguments.integer<uint64_t>(Key), arguments.integer(Task)};
}

Operation makeSceneChange(const Arguments& arguments) {
    return SceneChangeCall{arguments.integer(Task), arguments.integer<VELKSceneChangeMode>(Mode)};
}

// Exactly one of the two is there, which the reader has checked.
Operation makeControl(const Arguments& arguments) {
    if (arguments.has(Control)) {
        return RecordControlCall{
                std::make_unique<const VELKSingleShotControl>(arguments.control())};
    }
    return CategoryControlCall{arguments.integer(Category)};
}

Operation makeResetControl(const Arguments& arguments) {
    return ResetControlCall{arguments.optional(Category)};
}

Operation makeMarkCritical(const Arguments& arguments) {
    return MarkCriticalCall{arguments.optional(User)};
}

template <typename Call>
Operation makePlain(const Arguments& /*arguments*/) {
    return Call{};
}

template <typename Call>
Operation makeSpan(const Arguments& arguments) {
    return Call{arguments.integer(Task)};
}

template <typename Call>
Operation makeAnchor(const Arguments& arguments) {
    return Call{arguments.integer(Anchor), arguments.integer<uint32_t>(Serial)};
}

Operation makeCamFps(const Arguments& arguments) {
    return CamFpsCall{static_cast<float>(arguments.fps())};
}

Operation makeSetProperty(const Arguments& arguments) {
    return SetPropertyCall{arguments.text(Name), arguments.text(Value)};
}

ArgumentSet setOf(std::initializer_list<Argument> arguments) {
    ArgumentSet set;
    for (const Argument argument : arguments) {
        set.set(static_cast<size_t>(argument));
    }
    return set;
}

const std::vector<CallInfo>& callTable() {
    static const std::vector<CallInfo> table = {
            {.name = InitCall::kName,
             .required = setOf({Scenario, Customization}),
             .optional = setOf({DriverParam, QueryMaxEfficientFreq, TuningParam1, TuningParam2,
                                ApplyExtraDefaultControl}),
             .make = makeInit},
            {.name = UninitCall::kName, .make = makePlain<UninitCall>},
            {.name = TaskStartCall::kName,
             .required = setOf({Key, Task}),
             .optional = setOf({GroupHead, ExtraFlag0, ExtraFlag1}),
             .make = makeTaskStart},
            {.name = TaskEndCall::kName, .required = setOf({Key, Task}), .make = makeTaskEnd},
            {.name = SceneChangeCall::kName,
             .required = setOf({Task, Mode}),
             .make = makeSceneChange},
            {.name = CategoryControlCall::kName,
             .oneOf = setOf({Category, Control}),
             .make = makeControl},
            {.name = ResetControlCall::kName,
             .optional = setOf({Category}),
             .make = makeResetControl},
            {.name = MarkCriticalCall::kName, .optional = setOf({User}), .make = makeMarkCritical},
            {.name = UnsetCriticalCall::kName, .make = makePlain<UnsetCriticalCall>},
            {.name = SpanStartCall::kName,
             .required = setOf({Task}),
             .make = makeSpan<SpanStartCall>},
            {.name = SpanEndCall::kName, .required = setOf({Task}), .make = makeSpan<SpanEndCall>},
            {.name = AnchorStartCall::kName,
             .required = setOf({Anchor, Serial}),
             .make = makeAnchor<AnchorStartCall>},
            {.name = AnchorEndCall::kName,
             .required = setOf({Anchor, Serial}),
             .make = makeAnchor<AnchorEndCall>},
            {.name = VSyncCall::kName, .make = makePlain<VSyncCall>},
            {.name = CamFpsCall::kName, .required = setOf({Fps}), .make = makeCamFps},
            {.name = SetPropertyCall::kName,
             .required = setOf({Name, Value}),
             .make = makeSetProperty},
    };
    return table;
}

}  // namespace

const CallInfo* findCall(std::string_view name) {
    const auto& table = callTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [name](const CallInfo& info) { return info.name == name; });
    return found != table.end() ? &*found : nullptr;
}

std::string listCalls() {
    std::vector<std::string_view> names;
    for (const CallInfo& info : callTable()) {
        names.push_back(info.name);
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace desk
