// How long an urgent thread waits for one of low priority that is in the driver, while a third
// keeps their only processor busy. Real-time priorities need privileges: script/kernel runs this.
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <semaphore>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using namespace std::chrono_literals;

constexpr auto kInDriver = 20ms;
constexpr auto kBusyAtMost = 500ms;

// Keeps the processor busy until the calling thread has used this much of it, or is told to stop.
template <typename IsDone>
void keepBusy(std::chrono::nanoseconds time, IsDone isDone) {
    const auto used = [] {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    };
    for (const auto end = used() + time; used() < end && !isDone();) {
    }
}

// A real-time thread on the first processor. It starts its work at letGo().
class Actor {
  public:
    Actor(int priority, std::function<void()> action)
        : mThread([this, priority, action = std::move(action)] {
              cpu_set_t first;
              CPU_ZERO(&first);
              CPU_SET(0, &first);
              const sched_param parameters = {.sched_priority = priority};
              EXPECT_EQ(0, sched_setaffinity(0, sizeof first, &first));
              EXPECT_EQ(0, pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters));
              mIsReady.release();
              mMayAct.acquire();
              action();
          }) {
        mIsReady.acquire();
    }
    ~Actor() { mThread.join(); }
    Actor(const Actor&) = delete;
    Actor& operator=(const Actor&) = delete;

    void letGo() { mMayAct.release(); }

  private:
    std::binary_semaphore mIsReady{0}, mMayAct{0};
    std::thread mThread;
};

using InversionTest = LibraryTest;

TEST_F(InversionTest, UrgentThreadWaitsForTheDriverAlone) {
    up();
    start(1, 5);
    start(2, 5);
    recorder().enable(false);
    std::atomic<bool> isUrgentDone = false, isInDriver = false, hasBusyEnded = false;
    std::chrono::duration<double, std::milli> waited{};
    Actor urgent(3, [&] {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(0, start(2, 5));
        waited = std::chrono::steady_clock::now() - begin;
        isUrgentDone = true;
    });
    Actor busy(2, [&] {
        keepBusy(kBusyAtMost, [&] { return isUrgentDone.load(); });
        hasBusyEnded = !isUrgentDone;
    });
    node().observer = [&](unsigned, const void*, size_t, int) {
        if (!isInDriver.exchange(true)) {
            urgent.letGo();  // runs until it waits for this thread
            busy.letGo();
            keepBusy(kInDriver, [] { return false; });
        }
    };
    {
        Actor low(1, [] { EXPECT_EQ(0, start(1, 5)); });
        low.letGo();
    }
    while (!isUrgentDone) {
        std::this_thread::yield();
    }
    node().observer = nullptr;
    recorder().enable(true);
    EXPECT_FALSE(hasBusyEnded) << "the urgent thread waited for the busy one";
    std::printf("velk-kernel: the urgent thread waited %.1f ms\n", waited.count());
}

}  // namespace
}  // namespace fake
