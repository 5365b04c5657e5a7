// The library on the kernel's node: every operation from four threads against init and uninit.
#include <atomic>
#include <functional>
#include <thread>
#include <variant>
#include <vector>

#include "KernelNode.h"
#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "foundation/CommandTable.h"
#include "tuning/TuningLoader.h"
#include "tuning/TuningPlatform.h"

namespace kernel {
namespace {

constexpr int kRounds = 1000;

void tasks(int round) {
    const int keys[5] = {};
    const void* key = &keys[round % 5];
    VELKMachine::notifyTaskStart(key, 5);
    VELKMachine::notifyTaskSceneChange(5, VELKSceneChangeMode{});
    VELKMachine::notifySingleShotControl({.uclampLevels = {1, 2},
                                          .criticalTaskUclamps = {{5, round % 1024}},
                                          .limits = {1},
                                          .sharedFlag = true});
    VELKMachine::notifySingleShotCriticalTaskStart(5);
    VELKMachine::notifySingleShotCriticalTaskEnd(5);
    VELKMachine::notifyTaskEnd(key, 5);
    VELKMachine::notifyResetSingleShotControl();
}

void frames(int round) {
    VELKInfoNotifier::notifyVSync();
    VELKInfoNotifier::notifyCamFps(static_cast<float>(round));
    VELKMachine::notifyAnchorPointStart(1, static_cast<unsigned>(round));
    VELKMachine::notifyAnchorPointEnd(1, static_cast<unsigned>(round));
    VELKMachine::notifySingleShotControl(5);
    VELKMachine::notifyResetSingleShotControl(5);
    VELKMachine::markCriticalTask();
    VELKMachine::unsetCriticalTask();
}

// With tasks and an anchor in one scenario.
constexpr VELKScenario kScenario{6};
constexpr const char* kTuning = R"({
    "variants": [{
        "clusterLevels": [10, 20, 30, 40, 50, 60, 70, 80],
        "clusterDefaultLevels": [11, 21, 31],
        "tasks": [{"task": 5, "name": "TASK_RENDER", "targetTimeUs": 300, "defaultUclamp": 400}]
    }],
    "anchorSpecs": [{"scenario": 6, "anchors": [{"anchor": 1, "latencyUs": 100}]}]
})";

// Sends each command at least once, however the threads are scheduled.
void cycle(int round) {
    VELKMachine::init({.scenario = kScenario});
    if (round % 3 != 0) {
        VELKMachine::init({.scenario = kScenario});
        VELKMachine::uninit();
    }
    tasks(round);
    frames(round);
    VELKMachine::uninit();
}

void race(const std::vector<std::function<void(int)>>& works) {
    std::vector<std::thread> threads;
    threads.reserve(works.size());
    for (const auto& work : works) {
        threads.emplace_back([&work] {
            for (int round = 0; round < kRounds; ++round) {
                work(round);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// A scene change takes no global mutex: it may arrive after the next init has cleared its task.
TEST(Hammer, NothingIsRefusedButLateSceneChanges) {
    desk::installTuning(std::get<std::shared_ptr<const desk::TuningData>>(
            desk::parseTuning({kTuning, {}, {}})));
    const NodeFile keptOpen;  // keeps the driver's counters as well
    race({cycle, tasks, tasks, frames, frames});
    size_t commands = 0;
    for (const std::string& line : stateLines()) {
        if (line.starts_with("  command ")) {
            ++commands;
            EXPECT_TRUE(line.ends_with(" refused=0") || line.find("sceneChange") < line.size())
                    << line;
        }
    }
    EXPECT_EQ(commands, size_t{VELK_COMMANDS.size()});
    EXPECT_NE(stateLines().at(0).find(" initialised=0 "), std::string::npos);
    desk::installTuning(nullptr);
}

}  // namespace
}  // namespace kernel
