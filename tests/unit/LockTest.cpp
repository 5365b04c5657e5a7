// Which mutexes each operation takes, when, and what happens under them; and how the last uninit
// waits for calls that take none.
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using Control = VELKSingleShotControl;

class LockTest : public LibraryTest {
  protected:
    LockTest() {
        platform().anchors[kScenario][1] = {4000, 50};
        platform().singleShots[4] = {{kScenario, {.auxValue = 43}},
                                     {VELK_SCENARIO_FALLBACK, {.auxValue = 48}}};
    }

    // A thread of the test with the library call that it makes.
    struct Caller {
        explicit Caller(std::function<int()> operation)
            : thread([this, operation = std::move(operation)] {
                  tid = gettid();
                  result = operation();
              }) {}
        ~Caller() { thread.join(); }
        // Returns once the call has nothing more to do but wait. A call that never waits hangs.
        void awaitBlocked() const {
            for (char state = 'R'; state != 'S'; std::this_thread::yield()) {
                std::ifstream file("/proc/self/task/" + std::to_string(tid) + "/stat");
                std::string number, name;
                file >> number >> name >> state;
            }
        }
        std::atomic<pid_t> tid = 0;
        std::atomic<int> result = 99;
        std::thread thread;
    };
};

TEST_F(LockTest, EveryOperationTakesItsMutexesInOrder) {
    recorder().nameLocks({"global", "anchors", "active", "ids", "refused", "slots", "settings"});
    constexpr uint32_t kShown = kLock | kTrace | kNode | kProperty;
    init();
    hears(R"(lock global | {init | open node = 100
        lock anchors | unlock anchors | ioctl 27 0:7 4:101 8:102 12:103 28:10 32:65
        {notifySingleShotControl | lock active | unlock active | lock active | unlock active
        ioctl 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 328:-1 332:-1 336:-1 | } | }
        unlock global)",
          kShown & ~kProperty);
    node().fail(28, EINVAL, 1);
    start(1, 5);
    hears(R"(lock global | {notifyTaskStart
        lock ids | property vendor.debug.velk.dumptasktable.enable | unlock ids
        ioctl 28 0:1 8:200 12:16 16:50 24:1 27:SCALE = -1 | lock refused | unlock refused
        lock refused | unlock refused | lock refused | unlock refused
        ioctl 28 0:1 8:200 12:16 16:50 24:1 27:SCALE | lock refused | unlock refused
        ioctl 29 0:tid 4:1 | lock slots | unlock slots | } | unlock global)",
          kShown);
    start(1, 5);
    hears(R"(lock global | {notifyTaskStart | lock ids | unlock ids | lock refused | unlock refused
        ioctl 29 0:tid 4:1 | lock slots | unlock slots | } | unlock global)",
          kShown);
    sceneChange(5, 1);
    hears("{notifyTaskSceneChange | lock slots | unlock slots | ioctl 31 0:tid 4:1 12:1 | }",
          kShown);
    end(1, 5);
    hears(R"(lock global | {notifyTaskEnd | lock ids | unlock ids | ioctl 30 0:tid 4:1
        lock slots | unlock slots | } | unlock global)",
          kShown);
    end(2, 5);
    hears(R"(lock global | {notifyTaskEnd
        lock ids | property vendor.debug.velk.dumptasktable.enable | unlock ids
        lock ids | unlock ids | } | unlock global)",
          kShown);
    spanStart(5);
    hears(R"({notifySingleShotCriticalTaskStart | 0.getTaskDefaultUclamp(5)
        lock active | 0.getTaskDefaultUclamp(5) | unlock active | ioctl 36 0:tid 4:200 | })",
          kShown | kQuery);
    spanEnd(5);
    hears("{notifySingleShotCriticalTaskEnd | ioctl 37 0:tid | }", kShown);
    anchorStart(1, 1);
    hears(R"(lock anchors | property vendor.debug.velk.latencySpec | unlock anchors
        {notifyAnchorPointStart
        property vendor.debug.velk.latencySpec | property vendor.debug.velk.jitterSpec
        ioctl 38 0:1 8:1 16:1 20:4000 24:50 | })",
          kShown);
    anchorEnd(1, 1);
    hears(R"(lock anchors | unlock anchors | {notifyAnchorPointEnd
        property vendor.debug.velk.jitterSpec | ioctl 38 0:1 8:2 16:1 24:50 | })",
          kShown);
    anchorStart(2, 1);
    anchorEnd(2, 1);
    hears(R"(lock anchors | property vendor.debug.velk.latencySpec
        property vendor.debug.velk.jitterSpec | unlock anchors | lock anchors | unlock anchors)",
          kShown);
    const Control full = {.category = 7,
                          .uclampLevels = {1},
                          .percentLevel = 3,
                          .criticalTaskUclamps = {{5, 1}},
                          .limits = {1},
                          .sharedFlag = true};
    const std::string merge = R"(lock active | unlock active
        lock active | 0.getClusterLevel(0) | unlock active
        lock active | 0.getTaskTargetTime(5) | 0.getTaskDefaultUclamp(5) | unlock active
        lock active | unlock active | lock active | unlock active | lock active | unlock active
        lock slots | unlock slots | ioctl 35 0:tid 4:101 )";
    const std::string tail = " 328:-1 332:-1 336:-1 | }";
    control(full);
    hears("{notifySingleShotControl | fetch single shots | lock settings | unlock settings | " +
                  merge + "36:3 40:-1 148:1 152:1 228:200 232:200 308:1 325:1" + tail,
          kShown | kQuery | kPlatform);
    reset(7);
    hears("lock global | {notifyResetSingleShotControl | fetch single shots | lock settings"
          " | unlock settings | " +
                  merge + "36:-2 40:-1 144:1 148:1 152:1 228:200 232:200 308:999999 325:1" + tail +
                  " | unlock global",
          kShown | kQuery | kPlatform);
    const std::string marked = R"({notifySingleShotControl | fetch single shots
        lock active | unlock active | ioctl 35 0:tid 36:-1 40:-1 44:43)" +
                               tail;
    mark();
    hears(R"({markCriticalTask | lock global | fetch single shots | )" + marked +
                  " | unlock global | }",
          (kShown | kPlatform) & ~kProperty);
    unmark();
    hears(R"({unsetCriticalTask | lock global | {notifySingleShotControl
        lock active | unlock active | lock active | unlock active | ioctl 35 0:tid 36:-1 40:-1)" +
                  tail + " | unlock global | }",
          kShown);
    reset(0);
    hears(R"(lock global | {notifyResetSingleShotControl | lock active | unlock active
        lock active | unlock active | ioctl 35 0:tid 36:-1 40:-1 144:1)" +
                  tail + " | unlock global",
          kShown);
    uninit();
    hears("lock global | {uninit | ioctl 32 | close 100 | } | unlock global", kShown);
    unmark();
    hears("{unsetCriticalTask | lock global | open node = 101 | ioctl@101 35 0:tid 36:-1 40:-1" +
                  tail.substr(0, tail.find(" | }")) + " | unlock global | }",
          kShown);
    mark();
    hears("{markCriticalTask | ioctl@101 35 0:tid 36:-1 40:-1 44:48" + tail, kShown & ~kProperty);
    uninit();
    hears("lock global | close 101 | unlock global", kShown);
}

// Every call that takes no mutex, ended by a last uninit while the driver works on its command.
TEST_F(LockTest, LastUninitWaitsForTheCallsInside) {
    const struct {
        bool isUp;
        unsigned number;
        std::function<int()> operation;
    } cases[] = {{true, 31, [] { return sceneChange(5, 1); }},
                 {true, 33, vsync},
                 {true, 34, [] { return camFps(1); }},
                 {true, 35, [] { return control(Control{}); }},
                 {true, 36, [] { return spanStart(5); }},
                 {true, 37, [] { return spanEnd(5); }},
                 {true, 38, [] { return anchorStart(1, 1); }},
                 {true, 38, [] { return anchorEnd(1, 1); }},
                 {false, 35, [] { return mark(); }}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number);
        node().reset();
        if (c.isUp) {
            up();
            start(1, 5);
        }
        std::optional<Caller> last;
        during("ioctl " + std::to_string(c.number), [&] {
            last.emplace(uninit);
            last->awaitBlocked();
            EXPECT_EQ(-1, VELKInfoNotifier::notifyVSync()) << "newcomers find the library down";
        });
        heard();
        EXPECT_EQ(0, c.operation());
        last.reset();
        const std::string transcript = heard(kNode | kTrace | kResult);
        EXPECT_LT(transcript.find("\n}\n"), transcript.find("\nT2 close 100\n")) << transcript;
        EXPECT_EQ(-1, vsync());
        heard();
    }
}

TEST_F(LockTest, LastUninitWaitsForAllThatAreInside) {
    up();
    std::atomic<int> inside = 0;
    std::atomic<bool> isHeld[2] = {true, true};
    recorder().hook = [&](const Event& event) {
        if (event.text == "ioctl 33") {
            const int index = inside++;
            while (isHeld[index]) {
                std::this_thread::yield();
            }
        }
    };
    std::optional<Caller> last;
    {
        Caller first(vsync), second(vsync);
        while (inside < 2) {
            std::this_thread::yield();
        }
        last.emplace(uninit);
        last->awaitBlocked();
        isHeld[0] = false;
        while (first.result + second.result > 99) {
            std::this_thread::yield();
        }
        last->awaitBlocked();
        EXPECT_EQ(std::vector<int>({100}), node().openDescriptors());
        isHeld[1] = false;
    }
    last.reset();
}

// Marking hands over to an operation that takes the global mutex, for which uninit must not wait
// while it holds it.
TEST_F(LockTest, MarkingBehindTheLastUninitFindsNothing) {
    up();
    std::optional<Caller> marking;
    during("ioctl 32", [&] {
        marking.emplace([] { return mark(); });
        marking->awaitBlocked();
    });
    EXPECT_EQ(0, uninit());
    marking.reset();
    EXPECT_EQ(expected(R"(T2 {markCriticalTask
        T2 D: no VELKResource exists, may haven't process init() | T2 } | T2 = -1)"),
              heardLines("T2 "));
}

TEST_F(LockTest, ProcessExitClosesTheNodeUnlessACallIsInside) {
    const auto exitsDuring = [](bool hasCall) {
        std::atomic<bool> isInside = !hasCall;
        up();
        recorder().hook = [&](const Event& event) {
            std::fputs(event.text.starts_with("close") ? "closed" : "", stderr);
            while (event.text == "ioctl 33") {
                isInside = true;
            }
        };
        if (hasCall) {
            std::thread(vsync).detach();
        }
        while (!isInside) {
            std::this_thread::yield();
        }
        std::exit(0);
    };
    EXPECT_EXIT(exitsDuring(false), ::testing::ExitedWithCode(0), "^closed$");
    EXPECT_EXIT(exitsDuring(true), ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace fake
