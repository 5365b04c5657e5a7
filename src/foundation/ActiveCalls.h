/*
 * Counts the calls that use process-wide objects without the global mutex, so that whoever takes
 * such an object away can wait for those that may still use it, and for no later ones.
 *
 * There are two counters, of which one is open. Whoever waits has already taken the object out of
 * sight; it opens the other counter, closes this one and waits for it to run empty. Newcomers go to
 * the open counter and cannot find the object any more, so a steady stream of them does not hold
 * the waiter up. Counting in and out is atomic and takes no lock.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/Visibility.h"

class VELK_INTERNAL ActiveCalls {
  public:
    // Counts the calling operation as inside for the length of a scope. Shared pointers and
    // descriptors must be loaded after it is constructed.
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

    // Returns when every call that was inside has left. One caller at a time.
    void waitForThoseInside() noexcept;

    // Whether no call is inside at this moment.
    bool isQuiet() const noexcept;

  private:
    // What a closed counter is lower by: below zero whatever the number of threads.
    static constexpr int32_t kClosed = 1 << 30;

    uint32_t enter() noexcept {
        for (;;) {
            const uint32_t counter = mOpenCounter.load();
            if (++mInside[counter] > 0) {
                return counter;
            }
            // The counter was closed meanwhile, and somebody may be waiting for it to run empty.
            leave(counter);
        }
    }

    void leave(uint32_t counter) noexcept {
        if (--mInside[counter] < 0) {
            wakeWaiter(counter);
        }
    }

    void wakeWaiter(uint32_t counter) noexcept;

    // All operations are sequentially consistent: entering must be ordered before the load of the
    // object, and taking it away before the look at the counters.
    std::atomic<uint32_t> mOpenCounter = 0;
    std::atomic<int32_t> mInside[2] = {0, -kClosed};
};

// The calls that are inside the library without the global mutex.
VELK_INTERNAL extern ActiveCalls gActiveCalls;
