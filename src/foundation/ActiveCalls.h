/*
 * Counts the calls that use process-wide objects without the global mutex, so that whoever takes
 * such an object away can wait for those that may still use it, and for no later ones.
 *
 * There are two counters; the epoch says which one newcomers use. Whoever waits has already taken
 * the object out of sight, turns the epoch over, and waits for the counter of the old epoch: all
 * newcomers use the other one and cannot find the object any more, so a steady stream of them does
 * not hold the waiter up. Counting in and out is atomic and takes no lock.
 */
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "VELKTypes.h"

class VELK_INTERNAL ActiveCalls {
  public:
    // Counts the calling operation as inside for the length of a scope. Shared pointers and
    // descriptors must be loaded after it is constructed.
    class Inside {
      public:
        explicit Inside(ActiveCalls& calls) noexcept : mCalls(calls), mEpoch(calls.enter()) {}
        ~Inside() { mCalls.leave(mEpoch); }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

      private:
        ActiveCalls& mCalls;
        const uint32_t mEpoch;
    };

    // Returns when every call that was inside has left. One caller at a time.
    void waitForThoseInside() noexcept;

    // Whether no call is inside at this moment.
    bool isQuiet() const noexcept { return mInside[0].load() == 0 && mInside[1].load() == 0; }

  private:
    uint32_t enter() noexcept {
        for (;;) {
            const uint32_t epoch = mEpoch.load();
            mInside[epoch & 1].fetch_add(1);
            // Only a counter that belongs to the epoch still in force keeps a waiter waiting.
            if (mEpoch.load() == epoch) [[likely]] {
                return epoch;
            }
            leave(epoch);
        }
    }

    void leave(uint32_t epoch) noexcept {
        if (mInside[epoch & 1].fetch_sub(1) == 1 && mEpoch.load() != epoch) [[unlikely]] {
            wakeWaiter(epoch);
        }
    }

    void wakeWaiter(uint32_t epoch) noexcept;

    // All operations are sequentially consistent: entering must be ordered before the load of the
    // object, and taking it away before the look at the counters.
    std::atomic<uint32_t> mEpoch = 0;
    std::atomic<uint32_t> mInside[2] = {0, 0};
};
