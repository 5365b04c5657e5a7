#include "tune/SessionSurvey.h"

#include <fmt/format.h>

#include "VELKMachine.h"

namespace desk {

namespace {

constexpr int kHandedOverCategory = 0;
constexpr int kUsualUser = 4;  // that markCriticalTask() takes by default

}  // namespace

std::string describeUseCase(const UseCase& useCase) {
    return fmt::format("scenario {} and customization {}", int32_t{useCase.scenario},
                       int32_t{useCase.customization});
}

void SessionSurvey::read(const std::string& path) {
    mUsers = 0;
    mCurrent.reset();
    mHandedOver.clear();
    InputFile input(path);
    SessionReader reader(input, AfterFault::GoOn);
    for (bool isLast = false; !isLast;) {
        const SessionBlock block = reader.next();
        isLast = block.isLast;
        for (const SessionCall& call : block.calls) {
            take(input.name(), call);
        }
        mFaults.insert(mFaults.end(), block.faults.begin(), block.faults.end());
        if (block.error) {
            mFaults.push_back(*block.error);
        }
    }
}

void SessionSurvey::take(const std::string& session, const SessionCall& call) {
    const CallPlace place = {session, call.line};
    if (call.info->name == kInitCall) {
        begin(call.arguments, place);
    } else if (call.info->name == "uninit") {
        mUsers -= mUsers > 0 ? 1 : 0;
        if (mUsers == 0) {
            mCurrent.reset();
        }
    } else if (mCurrent) {
        takeArguments(call, place, mUseCases[*mCurrent]);
    }
}

// Only the first user's parameters count.
void SessionSurvey::begin(const CallArguments& arguments, const CallPlace& place) {
    if (++mUsers > 1) {
        return;
    }
    mCurrent = {static_cast<VELKScenario>(arguments.scenario.value_or(0)),
                static_cast<VELKFeatureCustomization>(arguments.customization.value_or(0))};
    mHandedOver.clear();
    mUseCases.try_emplace(*mCurrent, AskedTuning{place, {}, {}, {}});
}

void SessionSurvey::takeArguments(const SessionCall& call, const CallPlace& place,
                                  AskedTuning& asked) {
    const CallArguments& arguments = call.arguments;
    std::optional<int> category = arguments.category;
    if (call.info->name == "markCriticalTask") {
        category = arguments.user.value_or(kUsualUser);
    }
    if (call.info->name == "notifyTaskStart") {
        asked.tasks.emplace(*arguments.task, place);
    }
    if (arguments.anchor) {
        asked.anchors.emplace(*arguments.anchor, place);
    }
    if (arguments.control != nullptr) {
        mHandedOver.insert(arguments.control->category);
    }
    if (category && *category != kHandedOverCategory && !mHandedOver.contains(*category)) {
        asked.categories.emplace(*category, place);
    }
}

}  // namespace desk
