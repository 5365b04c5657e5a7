/*
 * Turns the signals that ask a tool to end into a call.
 */
#pragma once

#include <android-base/unique_fd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

#include "Event.h"

namespace desk {

/*
 * Watches for SIGHUP, SIGINT and SIGTERM while it exists; one that the tool's parent has
 * had ignored stays ignored. The first one calls `onSignal` on a thread of its own; the second ends
 * the process at once, with the exit status of that signal. To be made before any other thread,
 * because the threads made later inherit that these signals do not reach them.
 */
class SignalWatcher {
  public:
    // Throws std::system_error.
    explicit SignalWatcher(std::function<void()> onSignal);
    ~SignalWatcher();
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;

    // The first signal so far, 0 when there was none.
    int received() const { return mReceived; }

  private:
    void watch();

    std::function<void()> mOnSignal;
    sigset_t mWatched;
    sigset_t mFormerMask;
    android::base::unique_fd mSignals;
    Event mEnd;
    std::atomic<int> mReceived = 0;
    std::thread mThread;
};

}  // namespace desk
