// The C entry points of the shared library call what the program has put in place of the members:
// their own members would fail, since the library is down.
#include <gtest/gtest.h>

#include <sstream>

#include "VELKMachine.h"
#include "VELKMachineCus.h"

namespace {

std::string gCalled;

// Notes a call and gives it a result of its own.
template <typename... Arguments>
int called(const char* name, const Arguments&... arguments) {
    std::ostringstream text;
    text << name;
    ((text << ' ' << arguments), ...);
    gCalled = text.str();
    return static_cast<int>(gCalled.size());
}

}  // namespace

int VELKMachine::notifyTaskStart(const void* key, int task, const VELKTaskExtraParams& extra) {
    return called("start", key, task, extra.groupHead, int{extra.extraFlag0});
}
int VELKMachine::notifyTaskEnd(const void* key, int task) {
    return called("end", key, task);
}
int VELKMachine::notifyTaskSceneChange(int task, VELKSceneChangeMode mode) {
    return called("scene", task, static_cast<int>(mode));
}
int VELKMachine::notifySingleShotControl(int category) {
    return called("category", category);
}
int VELKMachine::notifySingleShotControl(const VELKSingleShotControl& control) {
    return called("control", &control);
}
int VELKMachine::notifyResetSingleShotControl(int category) {
    return called("reset", category);
}
int VELKMachine::notifyResetSingleShotControl() {
    return called("reset newest");
}
int VELKMachine::markCriticalTask() {
    return called("mark default");
}
int VELKMachine::markCriticalTask(int user) {
    return called("mark", user);
}
int VELKMachine::unsetCriticalTask() {
    return called("unmark");
}
int VELKMachine::notifySingleShotCriticalTaskStart(int task) {
    return called("span", task);
}
int VELKMachine::notifySingleShotCriticalTaskEnd(int task) {
    return called("span end", task);
}
int VELKMachine::notifyAnchorPointStart(int anchor, unsigned serial) {
    return called("anchor", anchor, serial);
}
int VELKMachine::notifyAnchorPointEnd(int anchor, unsigned serial) {
    return called("anchor end", anchor, serial);
}

namespace {

TEST(ForwarderTest, EachPassesItsArgumentsAndReturnsTheResult) {
    const VELKTaskExtraParams extra = {.groupHead = 3, .extraFlag0 = 4};
    const VELKSingleShotControl control;
    std::ostringstream address;
    address << static_cast<const void*>(&control);
    const void* const key = reinterpret_cast<const void*>(0x55);
    const auto forwards = [](const std::string& call, int result) {
        EXPECT_EQ(call, gCalled);
        EXPECT_EQ(static_cast<int>(call.size()), result);
    };
    forwards("start 0x55 7 3 4", notifyTaskStartExtraCus(key, 7, &extra));
    forwards("end 0x55 8", notifyTaskEndCus(key, 8));
    forwards("scene 9 11", notifyTaskSceneChangeCus(9, static_cast<VELKSceneChangeMode>(11)));
    forwards("category 12", notifySingleShotControlUserCus(12));
    forwards("control " + address.str(), notifySingleShotControlCus(&control));
    forwards("reset 13", notifyResetSingleShotControlUserCus(13));
    forwards("reset newest", notifyResetSingleShotControlCus());
    forwards("mark default", markCriticalTaskCus());
    forwards("mark 14", markCriticalTaskUserCus(14));
    forwards("unmark", unsetCriticalTaskCus());
    forwards("span 15", notifySingleShotCriticalTaskStartCus(15));
    forwards("span end 16", notifySingleShotCriticalTaskEndCus(16));
    forwards("anchor 17 4000000000", notifyAnchorPointStartCus(17, 4000000000U));
    forwards("anchor end 18 4000000001", notifyAnchorPointEndCus(18, 4000000001U));
}

}  // namespace
