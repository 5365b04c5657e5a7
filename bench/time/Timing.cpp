#include "time/Timing.h"

#include <atomic>
#include <barrier>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <vector>

namespace bench {

namespace {

thread_local int tThread = 0;

double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

int makeCalls(Action action) {
    int result = 0;
    for (int call = 0; call < kCallsAtOnce; ++call) {
        result |= action();
    }
    return result;
}

// The thread's own time for all the calls in seconds; empty when one fails.
std::optional<double> ownTime(Action action) {
    const double begin = threadSeconds();
    const int result = makeCalls(action);
    const double end = threadSeconds();
    return result == 0 ? std::optional(end - begin) : std::nullopt;
}

// So many that the threads act at once for nearly all of the time.
constexpr int kSharedRounds = 20;

// The time that passes until each thread has made all the calls, divided by the threads.
std::optional<double> sharedTime(int threads, Action action) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point begin;
    std::atomic<int> result = 0;
    std::barrier atOnce(threads, [&begin]() noexcept { begin = Clock::now(); });
    std::vector<std::thread> running;
    running.reserve(static_cast<size_t>(threads));
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&, thread] {
            tThread = thread;
            action();  // what a thread does once only
            atOnce.arrive_and_wait();
            for (int round = 0; round < kSharedRounds; ++round) {
                result |= makeCalls(action);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    const std::chrono::duration<double> passed = Clock::now() - begin;
    return result == 0 ? std::optional(passed.count() / threads / kSharedRounds) : std::nullopt;
}

}  // namespace

int threadNumber() {
    return tThread;
}

std::optional<double> timeCalls(Action action, std::optional<int> threads) {
    return threads ? sharedTime(*threads, action) : ownTime(action);
}

}  // namespace bench
