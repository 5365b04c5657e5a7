/*
 * A simulated day of camera use: the service comes up once, and the camera is opened many times,
 * each time with new caller keys. Prints what the library keeps after each part of the day, and
 * fails when more grows than the tables that grow by design, when a frame allocates, or when
 * anything is left after the last uninit.
 *
 * Usage: velk_soak [OPENINGS [FRAMES]]
 */
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "CountedMemory.h"
#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "support/Node.h"
#include "support/Platform.h"
#include "support/Recorder.h"

namespace {

using fake::node;
using fake::platform;

constexpr int kTasks[] = {5, 6, 20, 22, 24};
constexpr int kKeysPerTask = 4;
constexpr int kPairsPerOpening = 5 * kKeysPerTask;
constexpr int kParts = 12;
// A hash node and its share of just doubled buckets, with the allocator's overhead.
constexpr size_t kMaxBytesPerPair = 96;

uint64_t gCalls = 0;

double cpuSeconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(1);
    }
}

template <typename Operation, typename... Arguments>
void call(Operation operation, Arguments&&... arguments) {
    const fake::Side side(true);
    ++gCalls;
    require(operation(std::forward<Arguments>(arguments)...) == 0, "a call failed");
}

void start(uintptr_t key, int task) {
    call([=] { return VELKMachine::notifyTaskStart(reinterpret_cast<const void*>(key), task); });
}

void end(uintptr_t key, int task) {
    call([=] { return VELKMachine::notifyTaskEnd(reinterpret_cast<const void*>(key), task); });
}

// Every task is run under two keys at once.
void playFrame(uintptr_t firstKey, int frame) {
    call(VELKInfoNotifier::notifyVSync);
    call(VELKMachine::notifyAnchorPointStart, 1, static_cast<unsigned>(frame));
    for (const int task : kTasks) {
        const uintptr_t key = firstKey + static_cast<uintptr_t>(frame % kKeysPerTask);
        const uintptr_t other = firstKey + static_cast<uintptr_t>((frame + 1) % kKeysPerTask);
        start(key, task);
        start(other, task);
        call(VELKMachine::notifyTaskSceneChange, task, VELK_SCENE_CHANGE_MODE_DEFAULT);
        call(VELKMachine::notifySingleShotCriticalTaskStart, task);
        call(VELKMachine::notifySingleShotCriticalTaskEnd, task);
        end(other, task);
        end(key, task);
    }
    call(VELKMachine::notifyAnchorPointEnd, 1, static_cast<unsigned>(frame));
    call(VELKInfoNotifier::notifyCamFps, 29.97F);
}

void capture() {
    const VELKSingleShotControl control = {.uclampLevels = {512, 640},
                                           .percentLevel = 80,
                                           .criticalTaskUclamps = {{5, 600}, {24, 800}},
                                           .limits = {2400000},
                                           .sharedFlag = true};
    call([&] { return VELKMachine::notifySingleShotControl(control); });
    call([] { return VELKMachine::notifySingleShotControl(4); });
    call([] { return VELKMachine::notifyResetSingleShotControl(4); });
    call([] { return VELKMachine::notifyResetSingleShotControl(); });
}

void openCamera(int opening, int frames) {
    // Another user comes and goes, and the driver takes some registrations at the second attempt.
    const VELKInitParams params = {.scenario = VELKScenario{3}};
    call(VELKMachine::init, params);
    node().fail(28, EBUSY, opening % 3);
    const uintptr_t firstKey = 0x7F0000 + static_cast<uintptr_t>(opening) * kKeysPerTask;
    for (int frame = 0; frame < kKeysPerTask; ++frame) {
        playFrame(firstKey, frame);
    }
    const uint64_t before = allocations();
    for (int frame = 0; frame < frames; ++frame) {
        playFrame(firstKey, frame);
    }
    require(allocations() == before, "a frame allocates");
    capture();
    call(VELKMachine::uninit);
}

void playDay(int openings, int frames, FILE* report) {
    call(VELKMachine::init, VELKInitParams{.scenario = VELKScenario{3}});
    openCamera(0, frames);
    const size_t atStart = liveBytes();
    std::fprintf(report, "openings      pairs    bytes kept    bytes/pair    ns/call\n");
    for (int part = 1, opening = 1; part <= kParts; ++part) {
        const uint64_t calls = gCalls;
        const double before = cpuSeconds();
        for (; opening <= openings * part / kParts; ++opening) {
            openCamera(opening, frames);
        }
        const int pairs = (opening - 1) * kPairsPerOpening;
        const size_t grown = liveBytes() - atStart;
        std::fprintf(report, "%8d %10d %13zu %13.1f %10.0f\n", opening - 1, pairs, grown,
                     static_cast<double>(grown) / pairs,
                     1e9 * (cpuSeconds() - before) / static_cast<double>(gCalls - calls));
        require(grown <= kMaxBytesPerPair * static_cast<size_t>(pairs),
                "more grows than the pairs");
        require(node().openDescriptors().size() == 1, "a second descriptor is open");
    }
    call(VELKMachine::uninit);
}

}  // namespace

int main(int argc, char** argv) {
    const int openings = argc > 1 ? std::atoi(argv[1]) : 1200;
    const int frames = argc > 2 ? std::atoi(argv[2]) : 900;
    require(openings >= kParts && frames > 0, "Usage: velk_soak [OPENINGS (at least 12) [FRAMES]]");
    fake::recorder().enable(false);
    platform().reset();
    fake::setLogSwitches(0);
    platform().anchors[VELKScenario{3}][1] = {4000, 50};
    platform().singleShots[4][VELK_SCENARIO_FALLBACK] = {.percentLevel = 60, .requestValue = 1};
    FILE* const nowhere = std::fopen("/dev/null", "w");
    playDay(kParts, 1, nowhere);  // what the platform and the C library allocate once
    const size_t before = liveBytes();
    playDay(openings, frames, stdout);
    require(liveBytes() == before, "memory is left after the last uninit");
    require(node().openDescriptors().empty(), "a descriptor is left after the last uninit");
    require(fake::recorder().violations().empty(), "a descriptor was used while it was closed");
    std::printf("%llu calls; after the last uninit nothing is left\n",
                static_cast<unsigned long long>(gCalls));
    return 0;
}
