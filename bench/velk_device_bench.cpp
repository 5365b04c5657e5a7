/*
 * Times the operations with what every platform tree has: the public interface of Google Benchmark,
 * the stub platform, and the node that the kernel answers. velk_bench compares them with more.
 */
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "platform/StubPlatform.h"

namespace {

constexpr int kTask = bench::kFirstTask;
constexpr int kRunningTask = bench::kFirstTask + 1;  // on the measuring thread, all the time
const char gKey = 0;

// A call of an operation, with the call that takes it back where there is one. Returns 0 on
// success.
struct Operation {
    const char* name;
    int (*call)();
};

constexpr Operation kOperations[] = {
        {"notifyVSync", VELKInfoNotifier::notifyVSync},
        {"notifyCamFps", [] { return VELKInfoNotifier::notifyCamFps(30); }},
        {"notifyTaskStart + notifyTaskEnd",
         [] {
             return VELKMachine::notifyTaskStart(&gKey, kTask) |
                    VELKMachine::notifyTaskEnd(&gKey, kTask);
         }},
        {"notifyTaskSceneChange",
         [] {
             return VELKMachine::notifyTaskSceneChange(kRunningTask,
                                                       VELK_SCENE_CHANGE_MODE_DEFAULT);
         }},
        {"notifyAnchorPointStart",
         [] { return VELKMachine::notifyAnchorPointStart(bench::kAnchor, 1); }},
        {"notifyAnchorPointEnd",
         [] { return VELKMachine::notifyAnchorPointEnd(bench::kAnchor, 1); }},
        {"notifySingleShotCriticalTaskStart",
         [] { return VELKMachine::notifySingleShotCriticalTaskStart(kTask); }},
        {"notifySingleShotCriticalTaskEnd",
         [] { return VELKMachine::notifySingleShotCriticalTaskEnd(kTask); }},
        {"notifySingleShotControl + reset",
         [] {
             return VELKMachine::notifySingleShotControl(bench::kFirstCategory) |
                    VELKMachine::notifyResetSingleShotControl(bench::kFirstCategory);
         }},
};

void timeCalls(benchmark::State& state, int (*call)()) {
    while (state.KeepRunning()) {
        if (call() != 0) {
            state.SkipWithError("a call failed");
            break;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    bench::setSettingsEntries(1);
    VELKInitParams params{};
    params.scenario = VELK_SCENARIO_FALLBACK;
    if (VELKMachine::init(params) != 0 || VELKMachine::notifyTaskStart(&gKey, kRunningTask) != 0) {
        std::fprintf(stderr, "velk_device_bench: the library does not come up\n");
        return 1;
    }
    for (const Operation& operation : kOperations) {
        benchmark::RegisterBenchmark(operation.name, timeCalls, operation.call);
    }
    const size_t ran = benchmark::RunSpecifiedBenchmarks();
    VELKMachine::uninit();
    return ran > 0 ? 0 : 1;
}
