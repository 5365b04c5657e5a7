/*
 * Runs a few threads in every order that their atomic operations can take, and lets each load read
 * every value that C++'s memory model allows it.
 *
 * The threads are coroutines that run the code under test itself, with Atomic in the place of
 * std::atomic. A state is what the memory holds and what each thread has read so far; none is
 * visited twice.
 *
 * The memory keeps all values that were stored to a location, in order. A thread has a view: how
 * far in each location it has come. A load reads any value that its view is not past already.
 * Reading what was released joins the writer's view into the reader's. For each location, what is
 * sequentially consistent sees at least what the last such operation there saw or stored.
 */
#pragma once

#include <ucontext.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace model {

constexpr size_t kMostLocations = 16;
using View = std::array<uint8_t, kMostLocations>;
using Operation = std::function<int64_t(int64_t)>;

class Explorer {
  public:
    // Makes the shared objects anew and returns what the threads do with them.
    using Scenario = std::function<std::vector<std::function<void()>>()>;

    // Returns the first fault found, or nothing.
    std::string explore(const Scenario& scenario);
    size_t states() const { return mSeen.size(); }

    // What the threads do; the calling thread is the running one.
    size_t addLocation(int64_t value);
    int64_t load(size_t location, std::memory_order order);
    void store(size_t location, int64_t value, std::memory_order order);
    int64_t modify(size_t location, const Operation& operation, std::memory_order order);
    void wait(size_t location, int64_t old, std::memory_order order);
    void notify(size_t location);
    // What the running thread has read matters no more: all that is to be known of it is this step.
    void forgetReads(int64_t step);
    // Accesses that are not atomic: each has to come after those that it must not meet.
    void readPlain(size_t location, size_t firstReader);
    void writePlain(size_t location, size_t firstReader);

    static Explorer* running;

  private:
    struct Message {
        int64_t value;
        View view;  // what a reader that acquires it learns
    };
    struct Thread {
        std::function<void()> action;
        ucontext_t context;
        std::unique_ptr<char[]> stack;
        View view = {};
        std::vector<int64_t> read;
        size_t waitsFor = kMostLocations;
        bool isDone = false;
    };
    struct Choice {
        size_t taken, options;
    };

    static void startThread();
    void runOnce(const Scenario& scenario);
    bool isNew();
    bool nextPath();
    size_t choose(size_t options);
    void yield();
    void fail(const char* fault);
    Thread& current() { return *mThreads[mCurrent]; }
    void append(size_t location, int64_t value, std::memory_order order, const View& inherited);
    bool isUpToDate(size_t location);

    std::vector<std::vector<Message>> mMemory;
    View mConsistent = {};
    std::vector<std::unique_ptr<Thread>> mThreads;
    size_t mCurrent = 0;
    ucontext_t mScheduler = {};
    std::vector<Choice> mPath;
    size_t mDepth = 0;
    std::unordered_set<std::string> mSeen;
    std::string mFault;
};

// In the place of std::atomic.
template <typename T>
class Atomic {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): as std::atomic's.
    Atomic(T value) : mLocation(Explorer::running->addLocation(toWord(value))) {}
    Atomic(const Atomic&) = delete;
    Atomic& operator=(const Atomic&) = delete;

    // NOLINTBEGIN(readability-identifier-naming): the standard library's names.
    using Order = std::memory_order;
    static constexpr Order kDefault = Order::seq_cst;
    T load(Order order = kDefault) const { return fromWord(run().load(mLocation, order)); }
    void store(T value, Order order = kDefault) { run().store(mLocation, toWord(value), order); }
    T fetch_add(T number, Order order = kDefault) {
        return fromWord(run().modify(
                mLocation, [=](int64_t value) { return value + toWord(number); }, order));
    }
    T fetch_sub(T number, Order order = kDefault) { return fetch_add(-number, order); }
    void wait(T old, Order order = kDefault) const { run().wait(mLocation, toWord(old), order); }
    void notify_all() { run().notify(mLocation); }
    // NOLINTEND(readability-identifier-naming)

  private:
    static int64_t toWord(T value) {
        if constexpr (std::is_pointer_v<T>) {
            return reinterpret_cast<int64_t>(value);
        } else {
            return value;
        }
    }
    static T fromWord(int64_t word) {
        if constexpr (std::is_pointer_v<T>) {
            return reinterpret_cast<T>(word);
        } else {
            return static_cast<T>(word);
        }
    }
    static Explorer& run() { return *Explorer::running; }

    const size_t mLocation;
};

}  // namespace model
