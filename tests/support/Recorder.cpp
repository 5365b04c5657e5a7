#include "support/Recorder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>

#include "support/Format.h"

namespace fake {
namespace {

// Locks the recorder's own mutex, which is not recorded as one of the library's.
struct Guard {
    explicit Guard(std::mutex& mutex) : lock(mutex) {}
    Side side{false};
    std::lock_guard<std::mutex> lock;
};

}  // namespace

Recorder& recorder() {
    static auto* const instance = new Recorder;  // outlives the library's own static objects
    return *instance;
}

bool isDebugLogOn() {
    static const bool isOn = std::getenv("VELK_TEST_DEBUGLOG") != nullptr;
    return isOn;
}

int Recorder::threadNumber() {
    static std::atomic<int> threads = 0;
    static thread_local const int thread = ++threads;  // the system's own ids are used again
    const auto found = std::find(mThreads.begin(), mThreads.end(), thread);
    if (found != mThreads.end()) {
        return static_cast<int>(found - mThreads.begin()) + 1;
    }
    mThreads.push_back(thread);
    return static_cast<int>(mThreads.size());
}

void Recorder::reset() {
    const Guard guard(mMutex);
    mIsOn = true;
    hook = nullptr;
    mEvents.clear();
    mViolations.clear();
    mThreads.clear();
    mLocks.clear();
    mLockNames.clear();
    threadNumber();
}

void Recorder::record(Event event) {
    if (!isOn()) {
        return;
    }
    const Side side(false);
    const int error = errno;
    {
        const Guard guard(mMutex);
        event.thread = threadNumber();
        mEvents.push_back(event);
    }
    if (const auto current = hook) {
        current(event);
    }
    errno = error;
}

void Recorder::violation(std::string text) {
    const Guard guard(mMutex);
    mViolations.push_back(std::move(text));
}

std::vector<std::string> Recorder::violations() {
    const Guard guard(mMutex);
    return mViolations;
}

size_t Recorder::count(std::string_view beginning) {
    const Guard guard(mMutex);
    return static_cast<size_t>(
            std::count_if(mEvents.begin(), mEvents.end(),
                          [&](const Event& event) { return event.text.starts_with(beginning); }));
}

std::string Recorder::lockName(const void* mutex) {
    const Guard guard(mMutex);
    const auto [entry, isNew] = mLocks.try_emplace(mutex);
    if (isNew) {
        const size_t index = mLocks.size() - 1;
        entry->second = index < mLockNames.size() ? mLockNames[index] : std::to_string(index);
    }
    return entry->second;
}

std::string Recorder::take(uint32_t shown) {
    std::vector<Event> events;
    {
        const Guard guard(mMutex);
        events.swap(mEvents);
    }
    return formatTranscript(events, shown);
}

int call(const std::function<int()>& operation) {
    const Side side(true);
    errno = 0;
    try {
        const int result = operation();
        recorder().record(kResult, "= " + std::to_string(result));
        return result;
    } catch (const std::exception& exception) {
        recorder().record(kResult, std::string("! ") + exception.what());
        return kThrew;
    }
}

}  // namespace fake
