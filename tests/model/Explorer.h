/*
 * Runs a few threads in every order that their atomic operations can take, and lets each load read
 * every value that C++'s memory model allows it.
 *
 * The threads are coroutines that run the code under test itself, with Atomic in the place of
 * std::atomic. A state is the content of the memory and what each thread has read so far; none is
 * visited twice.
 *
 * The memory keeps all values stored to a location, in order. A thread has a view: for each
 * location, the oldest value that it may still read. A load may read that value or any later one.
 * An acquire of a released value joins the writer's view into the reader's. A sequentially
 * consistent operation sees at least what the last such operation on the same location saw or
 * stored.
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
    // Creates the shared objects and returns what the threads do with them.
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
    // Replaces what the running thread has read by `step`, which determines all it does from here
    // on.
    void forgetReads(int64_t step);
    // Accesses that are not atomic. Each has to happen after the conflicting ones before it.
    void readPlain(size_t location, size_t firstReader);
    void writePlain(size_t location, size_t firstReader);

    static Explorer* running;

  private:
    struct Message {
        int64_t value;
        View view;  // joined into the view of a reader that acquires it
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

// Replaces std::atomic.
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
