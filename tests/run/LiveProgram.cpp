/*
 * A program that is run by velk-run: LiveProgram WHAT.
 */
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"

namespace {

int init() {
    VELKInitParams params = {};
    params.scenario = static_cast<VELKScenario>(1);
    params.customization = static_cast<VELKFeatureCustomization>(2);
    return VELKMachine::init(params);
}

int useItThreeTimes() {
    int failures = 0;
    for (int cycle = 0; cycle < 3; ++cycle) {
        failures -= init();
        failures -= VELKMachine::notifyTaskStart(&failures, 2);
        failures -= VELKMachine::notifyTaskEnd(&failures, 2);
        failures -= VELKMachine::uninit();
    }
    return failures;
}

int crash() {
    VELKInfoNotifier::notifyVSync();
    return std::raise(SIGSEGV);
}

int waitForEnd() {
    init();
    std::puts("waiting");
    std::fflush(stdout);
    return pause();
}

// Continues in a child that outlives the program.
int becomeDaemon() {
    if (fork() == 0) {
        setsid();
        VELKInfoNotifier::notifyVSync();
        usleep(300000);
        VELKInfoNotifier::notifyVSync();
    }
    usleep(100000);
    return 0;
}

}  // namespace

int main(int, char** argv) {
    const std::string_view what = argv[1];
    return what == "cycles"   ? useItThreeTimes()
           : what == "crash"  ? crash()
           : what == "wait"   ? waitForEnd()
           : what == "up"     ? init()
           : what == "daemon" ? becomeDaemon()
                              : what == "failing"
                   ? VELKMachine::notifyTaskEnd(nullptr, 2),
           7 : 2;
}
