/*
 * Counts the calls that use shared objects without the global mutex, so that an operation that
 * destroys such an object can first wait for the calls that may still use it.
 *
 * There are two counters, of which one is open. The destroying operation hides the object, so that
 * no new call finds it. Then it opens the other counter, closes the current one, and waits until
 * the closed one is empty. New calls enter the open counter, so they do not prolong the wait.
 * Entering and leaving are atomic and take no lock.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/Visibility.h"

class VELK_INTERNAL ActiveCalls {
  public:
    // Counts the calling operation as inside for the length of a scope. The shared pointer or
    // descriptor that the operation uses must be loaded after this object is constructed.
    class Inside {
      public:
        explicit Inside(ActiveCalls& calls) noexcept : mCalls(calls), mCounter(calls.enter()) {}
        ~Inside() { mCalls.leave(mCounter); }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

      private:
        ActiveCalls& mCalls;
        const uint32_t mCounter;
    };

    // Returns when every call that is inside now has left. One caller at a time.
    void waitForCallsInside() noexcept;

    // Whether no call is inside at this moment.
    bool isQuiet() const noexcept;

  private:
    // Subtracted from a counter while it is closed. It keeps the counter below 0 with any number of
    // threads inside.
    static constexpr int32_t kClosed = 1 << 30;

    uint32_t enter() noexcept {
        for (;;) {
            const uint32_t counter = mOpenCounter.load();
            if (++mInside[counter] > 0) {
                return counter;
            }
            // The counter was closed meanwhile. Its waiter may have to be woken.
            leave(counter);
        }
    }

    void leave(uint32_t counter) noexcept {
        if (--mInside[counter] < 0) {
            wakeWaiter(counter);
        }
    }

    void wakeWaiter(uint32_t counter) noexcept;

    // All operations are sequentially consistent: a call must enter before it loads the object, and
    // the waiter must hide the object before it reads the counters.
    std::atomic<uint32_t> mOpenCounter = 0;
    std::atomic<int32_t> mInside[2] = {0, -kClosed};
};

// The calls that are inside the library without the global mutex.
VELK_INTERNAL extern ActiveCalls gActiveCalls;
