/*
 * A pointer to an object that calls use without a mutex while another operation may destroy the
 * object. Calls count themselves as inside, so that the destroying operation can wait for those
 * that may still use it.
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

// `Atomic`: another type than the standard library's lets a test choose the order of its
// operations.
template <typename Object, template <typename> typename Atomic = std::atomic>
class VELK_INTERNAL Published {
  public:
    // Counts the calling operation as inside for the length of a scope, and loads the object after
    // that: nothing else hands it out. What a call loads itself, such as a descriptor that is
    // closed in the same manner, it has to load within the scope too.
    class Use {
      public:
        explicit Use(Published& published) noexcept
            : mPublished(published),
              mCounter(published.enter()),
              mObject(published.mObject.load()) {}
        ~Use() { mPublished.leave(mCounter); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        // Null while nothing is published.
        Object* object() const noexcept { return mObject; }

      private:
        Published& mPublished;
        const uint32_t mCounter;
        Object* const mObject;
    };

    void publish(Object* object) noexcept { mObject.store(object); }
    // Calls that enter from now on find nothing.
    void hide() noexcept { mObject.store(nullptr); }

    // Returns when every call that is inside now has left. One caller at a time.
    [[gnu::cold]] void waitForCallsInside() noexcept {
        const uint32_t closing = mOpenCounter.load();
        const uint32_t opening = 1 - closing;
        mInside[opening].fetch_add(kClosed);
        mOpenCounter.store(opening);

        Atomic<int32_t>& inside = mInside[closing];
        inside.fetch_sub(kClosed);
        for (int32_t count = inside.load(); count != -kClosed; count = inside.load()) {
            inside.wait(count);
        }
    }

    // Whether no call is inside at this moment. Not while another operation waits.
    bool isQuiet() const noexcept { return mInside[mOpenCounter.load()].load() == 0; }

  private:
    // Subtracted from a counter while it is closed. It keeps the counter below 0 with any number of
    // threads inside.
    static constexpr int32_t kClosed = 1 << 30;

    uint32_t enter() noexcept {
        for (;;) {
            const uint32_t counter = mOpenCounter.load();
            if (mInside[counter].fetch_add(1) >= 0) {
                return counter;
            }
            // The counter was closed meanwhile. Its waiter may have to be woken.
            leave(counter);
        }
    }

    void leave(uint32_t counter) noexcept {
        if (mInside[counter].fetch_sub(1) <= 0) {
            wakeWaiter(counter);
        }
    }

    [[gnu::cold, gnu::noinline]] void wakeWaiter(uint32_t counter) noexcept {
        mInside[counter].notify_all();
    }

    // All operations are sequentially consistent: a call must enter before it loads the object, and
    // the waiter must hide the object before it reads the counters.
    Atomic<Object*> mObject = nullptr;
    Atomic<uint32_t> mOpenCounter = 0;
    Atomic<int32_t> mInside[2] = {0, -kClosed};
};
