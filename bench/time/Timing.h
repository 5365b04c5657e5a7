/*
 * Times an action, on the measuring thread or on several threads at once.
 */
#pragma once

#include <optional>
#include <semaphore>
#include <thread>

#include "time/Table.h"

namespace bench {

inline constexpr int kMostThreads = 4;

// Which of the threads that act at once this one is, from 0 on.
int threadNumber();

// Has each thread make kCallsAtOnce calls. Without a number of threads it gives what the calling
// thread needs, in seconds; with one it gives the time that passes until all are done, divided by
// the threads. Empty when a call fails.
std::optional<double> timeCalls(Action action, std::optional<int> threads);

// Waits for as long as it exists. A camera service has many threads, and the C library takes its
// shorter single-thread paths in a process that has one.
class IdleThread {
  public:
    IdleThread() : mThread([this] { mEnd.acquire(); }) {}
    ~IdleThread() {
        mEnd.release();
        mThread.join();
    }
    IdleThread(const IdleThread&) = delete;
    IdleThread& operator=(const IdleThread&) = delete;

  private:
    std::binary_semaphore mEnd{0};
    std::thread mThread;
};

}  // namespace bench
