// Every operation on several threads against cycling init and uninit. Recording is off, because it
// would order the threads; the node checks its descriptors, the thread sanitizer the rest.
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

class ThreadTest : public LibraryTest {
  protected:
    ThreadTest() {
        platform().anchors[kScenario] = {{1, {4000, 50}}};
        platform().singleShots[4] = {{VELK_SCENARIO_FALLBACK, {.auxValue = 1}}};
        VELKMachine::uninit();  // reads the debug-log property, which is read once
        recorder().enable(false);
    }

    using Work = std::function<void(int round)>;
    static constexpr int kRounds = 4000;

    static void race(const std::vector<Work>& works) {
        std::vector<std::thread> threads;
        threads.reserve(works.size());
        std::atomic<size_t> ready = 0;
        for (const Work& work : works) {
            threads.emplace_back([&] {
                for (++ready; ready < works.size();) {
                }
                for (int round = 0; round < kRounds; ++round) {
                    work(round);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    static void cycle(int round) {
        init();
        if (round % 3 != 0) {
            init();
            uninit();
        }
        uninit();
    }

    static void tasks(int round) {
        const auto key = static_cast<uintptr_t>(round % 5);
        start(key, 5);
        sceneChange(5, round);
        control(VELKSingleShotControl{.uclampLevels = {1, 2},
                                      .percentLevel = round % 100,
                                      .criticalTaskUclamps = {{5, round % 1024}, {100 + round, 1}},
                                      .limits = {1},
                                      .sharedFlag = true});
        spanStart(5);
        spanEnd(5);
        end(key, 5);
        reset();
    }

    static void frames(int round) {
        vsync();
        camFps(static_cast<float>(round));
        anchorStart(1 + round % 3, 1);
        anchorEnd(1 + round % 3, 1);
        control(VELKSingleShotControl{.category = 3 + round % 4, .percentLevel = 5});
        control(3 + round % 4);
        reset(3 + round % 4);
    }

    static void marks(int /*round*/) {
        mark();
        unmark();
    }

    // What the camera stack and a shell change at any time.
    static void switches(int round) {
        setLogSwitches(static_cast<uint32_t>(round % 4), static_cast<uint32_t>(round % 7));
        setLogger(round % 5 != 0);
        platform().set(kForceOff, round % 11 == 0 ? 1 : 0);
        platform().set(kLatencySpec, round % 13 == 0 ? 100005 : 0);
    }
};

TEST_F(ThreadTest, EverythingAgainstInitAndUninit) {
    race({cycle, cycle, tasks, tasks, frames, frames, switches});
    EXPECT_GT(node().commands(), 0U);
}

TEST_F(ThreadTest, MarkingAgainstInitAndUninit) {
    race({cycle, cycle, marks, marks, frames, switches});
    // Two first calls may both open the node, and the earlier descriptor stays open.
    bringDown();
    EXPECT_EQ(std::vector<std::string>(), recorder().violations());
    node().reset();
}

TEST_F(ThreadTest, TasksWhileTheLibraryIsUp) {
    init();
    race({tasks, tasks, frames, marks});
    uninit();
}

}  // namespace
}  // namespace fake
