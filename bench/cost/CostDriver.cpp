/*
 * Runs every operation of the library in its steady state, for a profiler that counts instructions.
 * Collecting is on during each measured call alone. Each measurement writes a profile of its own,
 * whose trigger describes it: MEASURE|what|size|operation|limit|allocations|calls. Without a
 * profiler the program only checks that every call succeeds.
 */
#include <malloc.h>
#include <valgrind/callgrind.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "cost/StubNode.h"
#include "platform/StubPlatform.h"

namespace {

// Enough to use many pairs; fewer where a call copies all the settings.
constexpr int kCalls = 1000;
constexpr int kLongCalls = 20;
constexpr int kWarmUpCalls = 10;

constexpr int kTask = bench::kFirstTask;
// Threads and keys of the measured calls, and of those that only fill the tables.
constexpr int kOwnThread = 1;
constexpr int kFirstOtherThread = 2;
constexpr int kPairsByDefault = 10;

int gKnownPairs = kPairsByDefault;
int gRound = 0;

// Addresses like those of heap objects: all different, at irregular distances.
const void* keyOf(int pair) {
    constexpr uintptr_t kHeap = 0x7f5500000000;
    constexpr uintptr_t kAlignment = 16;
    constexpr uint32_t kPlaces = 1U << 20;
    const uint32_t place = static_cast<uint32_t>(pair) * 2654435761U % kPlaces;
    return reinterpret_cast<const void*>(kHeap + kAlignment * place);
}

// Each round uses another pair, spread over all known ones.
int pairOfRound() {
    return static_cast<int>(int64_t{gRound} * 7919 % gKnownPairs);
}

int startTask() {
    return VELKMachine::notifyTaskStart(keyOf(pairOfRound()), kTask);
}
int endTask() {
    return VELKMachine::notifyTaskEnd(keyOf(pairOfRound()), kTask);
}

VELKSingleShotControl controlWithLevels(uint32_t level) {
    VELKSingleShotControl control;
    control.uclampLevels.assign(8, level);
    return control;
}
const VELKSingleShotControl gControl = controlWithLevels(512);

int pushControl() {
    return VELKMachine::notifySingleShotControl(gControl);
}
int resetControl() {
    return VELKMachine::notifyResetSingleShotControl();
}
int pushCategory() {
    return VELKMachine::notifySingleShotControl(bench::kFirstCategory);
}
int resetCategory() {
    return VELKMachine::notifyResetSingleShotControl(bench::kFirstCategory);
}

int nothing() {
    return 0;
}

constexpr int kNoLimit = 0;

struct Operation {
    const char* name;
    int limit;        // instructions a call
    int allocations;  // allowed a call
    int (*call)();
    // Prepare the measured call and clean up after it; not measured.
    int (*before)() = nothing;
    int (*after)() = nothing;
};

const Operation kVSync = {"notifyVSync", 55, 0, VELKInfoNotifier::notifyVSync};
const Operation kCamFps = {"notifyCamFps", 70, 0,
                           [] { return VELKInfoNotifier::notifyCamFps(30); }};
const Operation kTaskStart = {"notifyTaskStart", 480, 0, startTask, nothing, endTask};
const Operation kTaskEnd = {"notifyTaskEnd", 440, 0, endTask, startTask};
const Operation kSceneChange = {
        "notifyTaskSceneChange",
        180,
        0,
        [] { return VELKMachine::notifyTaskSceneChange(kTask, VELK_SCENE_CHANGE_MODE_DEFAULT); },
        startTask,
        endTask};
const Operation kAnchorStart = {"notifyAnchorPointStart", 265, 0, [] {
                                    return VELKMachine::notifyAnchorPointStart(bench::kAnchor, 1);
                                }};
const Operation kAnchorEnd = {"notifyAnchorPointEnd", 215, 0,
                              [] { return VELKMachine::notifyAnchorPointEnd(bench::kAnchor, 1); }};
// The control copies the caller's record: a node and its one array of levels.
const Operation kControl = {"notifySingleShotControl", 1565, 2, pushControl, nothing, resetControl};
const Operation kReset = {"notifyResetSingleShotControl", 1600, 0, resetControl, pushControl};
const Operation kSpanStart = {"notifySingleShotCriticalTaskStart", 180, 0,
                              [] { return VELKMachine::notifySingleShotCriticalTaskStart(kTask); }};
const Operation kSpanEnd = {"notifySingleShotCriticalTaskEnd", 76, 0,
                            [] { return VELKMachine::notifySingleShotCriticalTaskEnd(kTask); }};
const Operation kCategoryControl = {
        "notifySingleShotControl(category)", kNoLimit, 0, pushCategory, nothing, resetCategory};
const Operation kCategoryReset = {"notifyResetSingleShotControl(category)", kNoLimit, 0,
                                  resetCategory, pushCategory};

void require(int result, const char* what) {
    if (result != 0) {
        std::fprintf(stderr, "velk_cost: %s failed: the measurement would be of the wrong path\n",
                     what);
        std::exit(EXIT_FAILURE);
    }
}

void takeTurns(const Operation& operation, int calls) {
    for (int call = 0; call < calls; ++call) {
        require(operation.before(), operation.name);
        CALLGRIND_TOGGLE_COLLECT;
        const int result = operation.call();
        CALLGRIND_TOGGLE_COLLECT;
        require(result, operation.name);
        require(operation.after(), operation.name);
        ++gRound;
    }
}

void measure(const char* what, int size, const Operation& operation, int calls) {
    takeTurns(operation, kWarmUpCalls);
    CALLGRIND_ZERO_STATS;
    takeTurns(operation, calls);
    const std::string trigger = std::string("MEASURE|") + what + '|' + std::to_string(size) + '|' +
                                operation.name + '|' + std::to_string(operation.limit) + '|' +
                                std::to_string(operation.allocations) + '|' + std::to_string(calls);
    CALLGRIND_DUMP_STATS_AT(trigger.c_str());
}

// --- States to measure in ------------------------------------------------------------------------

void knowPairs(int pairs) {
    for (int pair = 0; pair < pairs; ++pair) {
        require(VELKMachine::notifyTaskStart(keyOf(pair), kTask), "filling the pairs");
        require(VELKMachine::notifyTaskEnd(keyOf(pair), kTask), "filling the pairs");
    }
    gKnownPairs = pairs;
}

// Other threads run the task meanwhile, with keys that are not measured.
void occupySlots(int slots) {
    for (int slot = 0; slot < slots; ++slot) {
        bench::setThread(kFirstOtherThread + slot);
        require(VELKMachine::notifyTaskStart(keyOf(-1 - slot), kTask), "filling the slots");
    }
    bench::setThread(kOwnThread);
}

// Every control asks for another level, with the measured control's in the middle.
void pushControls(int controls) {
    for (int control = 0; control < controls; ++control) {
        const auto level = static_cast<uint32_t>(12 + control % 1000);
        require(VELKMachine::notifySingleShotControl(controlWithLevels(level)),
                "filling the controls");
    }
}

void fillSettings(int entries) {
    bench::setSettingsEntries(static_cast<size_t>(entries));
}

class LibraryUp {
  public:
    LibraryUp() {
        VELKInitParams params{};
        params.scenario = VELK_SCENARIO_FALLBACK;
        require(VELKMachine::init(params), "init");
        knowPairs(kPairsByDefault);
    }
    ~LibraryUp() {
        VELKMachine::uninit();
        bench::setSettingsEntries(0);
    }
    LibraryUp(const LibraryUp&) = delete;
    LibraryUp& operator=(const LibraryUp&) = delete;
};

// --- What the program does -----------------------------------------------------------------------

void measureLimits() {
    const LibraryUp library;
    for (const Operation* operation :
         {&kVSync, &kCamFps, &kTaskStart, &kTaskEnd, &kSceneChange, &kAnchorStart, &kAnchorEnd,
          &kControl, &kReset, &kSpanStart, &kSpanEnd}) {
        measure("steady state", 0, *operation, kCalls);
    }
}

struct Growth {
    const char* what;
    void (*reach)(int size);
    std::vector<int> sizes;
    std::vector<const Operation*> operations;
    int calls = kCalls;
};

void measureGrowth() {
    const Growth growths[] = {
            {"known pairs", knowPairs, {10, 1000, 100000}, {&kTaskStart, &kTaskEnd, &kSceneChange}},
            // The measured call itself takes one slot, or adds one control.
            {"active slots",
             [](int slots) { occupySlots(slots - 1); },
             {1, 4, 16},
             {&kTaskStart, &kTaskEnd, &kSceneChange}},
            {"active controls",
             [](int controls) { pushControls(controls - 1); },
             {1, 10, 1000},
             {&kControl, &kReset, &kSpanStart}},
            {"settings entries",
             fillSettings,
             {1, 1000},
             {&kCategoryControl, &kCategoryReset},
             kLongCalls},
    };
    for (const Growth& growth : growths) {
        for (const int size : growth.sizes) {
            const LibraryUp library;
            growth.reach(size);
            for (const Operation* operation : growth.operations) {
                measure(growth.what, size, *operation, growth.calls);
            }
        }
    }
}

size_t bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Prints what the allocator hands out per entry of a table, its own overhead included.
void printMemory(const char* what, int entries, void (*fill)(int)) {
    const LibraryUp library;
    const size_t before = bytesInUse();
    fill(entries);
    const auto grown = static_cast<double>(bytesInUse() - before);
    std::printf("%s|%d|%.1f\n", what, entries, grown / entries);
}

void printMemoryUse() {
    printMemory("known pair", 100000, knowPairs);
    printMemory("slot", 1024, [](int slots) {
        // One pair, so that nothing but slots is added.
        for (int slot = 0; slot < slots; ++slot) {
            require(startTask(), "filling the slots");
        }
    });
    printMemory("active control with 8 levels", 1000, pushControls);
}

}  // namespace

int main(int argc, char** argv) {
    // A camera service has many threads; once a process has had a second one, the C library no
    // longer takes its shorter single-thread paths.
    std::thread([] {}).join();
    const std::string mode = argc == 2 ? argv[1] : "";
    if (mode == "limits") {
        measureLimits();
    } else if (mode == "growth") {
        measureGrowth();
    } else if (mode == "memory") {
        printMemoryUse();
    } else {
        std::fprintf(stderr, "usage: velk_cost limits|growth|memory\n");
        return 2;
    }
    return EXIT_SUCCESS;
}
