// How the last uninit and the end of the process wait for calls that take no mutex.
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using Control = VELKSingleShotControl;

// What static objects may do that are destroyed after the library's own.
bool gCallsAfterTeardown = false;
struct LateCaller {
    ~LateCaller() {
        if (gCallsAfterTeardown) {
            std::fprintf(stderr, ", then %d %d", VELKInfoNotifier::notifyVSync(),
                         VELKMachine::notifyTaskEnd(nullptr, 5));
        }
    }
};
[[gnu::init_priority(101)]] const LateCaller gLateCaller;

class LifetimeTest : public LibraryTest {
  protected:
    LifetimeTest() {
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
        void awaitResult(int expected) const {
            while (result != expected) {
                std::this_thread::yield();
            }
        }
        std::atomic<pid_t> tid = 0;
        std::atomic<int> result = 99;
        std::thread thread;
    };
};

// Every call that takes no mutex, ended by a last uninit while the driver works on its command.
TEST_F(LifetimeTest, LastUninitWaitsForTheCallsInside) {
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
        takeTranscript();
        EXPECT_EQ(0, c.operation());
        last.reset();
        const std::string transcript = takeTranscript(kNode | kTrace | kResult);
        EXPECT_LT(transcript.find("\n}\n"), transcript.find("\nT2 close 100\n")) << transcript;
        EXPECT_EQ(-1, vsync());
        takeTranscript();
    }
}

TEST_F(LifetimeTest, LastUninitWaitsForAllThatAreInside) {
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

// Marking opens the node for itself while an init and the last uninit go past it.
TEST_F(LifetimeTest, LastUninitClosesMarkingsDescriptorAfterTheInstance) {
    std::optional<Caller> last;
    during("open node", [&] {
        std::thread([] { up(); }).join();
        last.emplace(uninit);
        last->awaitBlocked();
    });
    EXPECT_EQ(0, mark());
    last.reset();
    EXPECT_EQ("T3 close 101\nT3 close 100\n", takeLines("T3 close"));
}

// What init does with the descriptor that a mark is just sending on.
TEST_F(LifetimeTest, FailedInitWaitsForMarkingAndASuccessfulOneDoesNot) {
    for (const bool fails : {true, false}) {
        node().reset();
        platform().sources[0].isMissing = fails;
        std::optional<Caller> starting;
        during("ioctl 35", [&] {
            starting.emplace([] { return init(); });
            if (fails) {
                starting->awaitBlocked();
                EXPECT_EQ(std::vector<int>({100}), node().openDescriptors());
            } else {
                starting->awaitResult(0);
            }
        });
        EXPECT_EQ(0, mark());
        starting.reset();
        EXPECT_EQ(fails, node().openDescriptors().empty());
    }
}

// Marking hands over to an operation that takes the global mutex, for which uninit must not wait
// while it holds it.
TEST_F(LifetimeTest, MarkingBehindTheLastUninitFindsNothing) {
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
              takeLines("T2 "));
}

// The second of two notifications of a new category fails inside the first, then the first does:
// the category is as unknown as before.
TEST_F(LifetimeTest, FailedNotificationsLeaveNoDefaultBehind) {
    up();
    const Control fifth = {.category = 5, .uclampLevels = {1}};
    for (const bool secondFails : {true, false}) {
        bool isInside = false;
        recorder().hook = [&](const Event& event) {
            if (event.isULogger && event.text.starts_with("add default") && !isInside) {
                isInside = true;
                std::thread([&] { control(fifth); }).join();
                throw std::runtime_error("platform");
            }
            if (secondFails && event.text == "0.getClusterLevel(0)") {
                throw std::runtime_error("platform");
            }
        };
        EXPECT_EQ(kThrew, control(fifth));
        recorder().hook = nullptr;
        EXPECT_EQ(secondFails ? -1 : 0, control(5));
    }
    // A notification by category keeps the default that a failing one has made.
    during("add default control", [] {
        std::thread([] { EXPECT_EQ(0, control(6)); }).join();
        throw std::runtime_error("platform");
    });
    EXPECT_EQ(kThrew, control(Control{.category = 6, .uclampLevels = {1}}));
    EXPECT_EQ(0, control(6));
    // Notifications that fail while the settings know the category take nothing away from it.
    platform().singleShots[5] = {{kScenario, fifth}};
    recorder().hook = [](const Event& event) {
        if (event.text == "0.getClusterLevel(0)") {
            throw std::runtime_error("platform");
        }
    };
    for (int failures = 0; failures < 4; ++failures) {
        EXPECT_EQ(kThrew, control(fifth));
    }
    recorder().hook = nullptr;
    platform().singleShots.clear();
    EXPECT_EQ(0, control(5));
}

// While a refusal is logged, another thread resets the control and hands over one of its own, which
// the allocator puts at the same address. What the logger throws then must not remove that one.
TEST_F(LifetimeTest, FailedNotificationRemovesNobodyElsesControl) {
    up();
    node().fail(35, EINVAL, 1);
    recorder().hook = [](const Event& event) {
        if (event.isULogger && event.text.starts_with("[sendIOCtl]")) {
            recorder().hook = nullptr;
            std::thread([] {
                EXPECT_EQ(0, reset());
                EXPECT_EQ(0, control(Control{.percentLevel = 7, .auxValue = 2}));
            }).join();
            throw std::runtime_error("logger");
        }
    };
    EXPECT_EQ(kThrew, control(Control{.percentLevel = 7, .auxValue = 1}));
    takeTranscript();
    EXPECT_EQ(0, control(Control{.percentLevel = 3}));
    EXPECT_EQ(0, reset());
    EXPECT_EQ(0, reset());
    expectTranscript(R"(
  ioctl 35 tid=caller percentLevel=7 requestValue=-1 extraValues=-1,-1,-1
  ioctl 35 tid=caller percentLevel=7 requestValue=-1 isReset=1 extraValues=-1,-1,-1
  ioctl 35 tid=caller percentLevel=-2 requestValue=-1 auxValue=2 isReset=1 extraValues=-1,-1,-1)",
                     kNode);
}

// Calls that come later, from static objects, find the library down and do not hang.
TEST_F(LifetimeTest, ProcessExitClosesTheNodeUnlessACallIsInside) {
    const auto exitsDuring = [](bool hasCall, int cycles) {
        std::atomic<bool> isInside = !hasCall;
        for (up(); cycles > 0; --cycles) {
            uninit();
            up();
        }
        recorder().hook = [&](const Event& event) {
            std::fputs(event.text.starts_with("close") ? "closed" : "", stderr);
            while (event.text.ends_with(" 33")) {
                isInside = true;
            }
        };
        gCallsAfterTeardown = true;
        if (hasCall) {
            std::thread(vsync).detach();
        }
        while (!isInside) {
            std::this_thread::yield();
        }
        std::exit(0);
    };
    for (const int cycles : {0, 1}) {
        EXPECT_EXIT(exitsDuring(false, cycles), ::testing::ExitedWithCode(0),
                    "^closed, then -1 -1$");
        EXPECT_EXIT(exitsDuring(true, cycles), ::testing::ExitedWithCode(0), "^, then -1 -1$");
    }
}

}  // namespace
}  // namespace fake
