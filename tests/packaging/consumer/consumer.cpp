// A camera service in C++: the classes link, and the driver answers.
#include <VELKInfoNotifier.h>
#include <VELKMachine.h>
#include <VELKMachineCus.h>
#include <driver/DriverModel.h>
#include <tuning/TuningLoader.h>
#include <tuning/TuningPlatform.h>

#include <iostream>

namespace {

int gFailures = 0;

void expect(int expected, int result, const char* call) {
    if (result != expected) {
        std::cerr << call << " returned " << result << ", expected " << expected << "\n";
        ++gFailures;
    }
}

}  // namespace

int main(int, char** argv) {
    VELKSingleShotControl control;
    control.uclampLevels = {512, 512};

    // Nobody has installed tuning data, so the library cannot come up.
    expect(-1, VELKMachine::init(VELKInitParams{}), "init");
    expect(-1, VELKMachine::notifyTaskStart(&control, 6), "notifyTaskStart");
    expect(-1, VELKMachine::notifySingleShotControl(control), "notifySingleShotControl");
    expect(-1, VELKInfoNotifier::notifyVSync(), "notifyVSync");

    // What needs no tuning data reaches the driver.
    expect(0, VELKMachine::unsetCriticalTask(), "unsetCriticalTask");
    expect(0, unsetCriticalTaskCus(), "unsetCriticalTaskCus");
    expect(-1, VELKMachine::uninit(), "uninit");

    // The desk's headers go with its libraries: with the tuning data of the sample it comes up.
    desk::installTuning(std::get<0>(desk::loadTuning(argv[1])));
    expect(0, VELKMachine::init(VELKInitParams{}), "init with tuning data");
    expect(1, desk::controlNode().snapshot().openDescriptors > 0, "the node, while it is up");
    expect(0, VELKMachine::uninit(), "uninit after an init");
    return gFailures;
}
