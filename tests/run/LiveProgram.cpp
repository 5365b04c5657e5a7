/*
 * A program that is run by velk-run: LiveProgram WHAT.
 */
#include <pthread.h>
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

// Cancels a thread in the middle of its calls.
int cancel() {
    pthread_t thread = {};
    init();
    pthread_create(
            &thread, nullptr,
            [](void*) -> void* {
                for (int i = 0; i < 1000; ++i) {
                    VELKInfoNotifier::notifyVSync();
                }
                pthread_testcancel();
                return nullptr;
            },
            nullptr);
    pthread_cancel(thread);
    void* result = nullptr;
    pthread_join(thread, &result);
    return result == PTHREAD_CANCELED ? 0 : 1;
}

int fail() {
    VELKMachine::notifyTaskEnd(nullptr, 2);
    return 7;
}

constexpr struct {
    std::string_view name;
    int (*run)();
} kModes[] = {
        {"cycles", useItThreeTimes}, {"crash", crash},   {"wait", waitForEnd}, {"up", init},
        {"daemon", becomeDaemon},    {"cancel", cancel}, {"failing", fail},
};

}  // namespace

int main(int, char** argv) {
    for (const auto& [name, run] : kModes) {
        if (name == argv[1]) {
            return run();
        }
    }
    return 2;
}
