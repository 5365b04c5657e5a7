/*
 * Passes the signals that ask velk-run to end on to the program.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <sys/types.h>

#include <csignal>

namespace desk {

// Receives SIGHUP, SIGINT, SIGQUIT and SIGTERM during its lifetime. A signal that was ignored
// before stays ignored. Not thread-safe.
class SignalPassing {
  public:
    // Throws std::system_error.
    SignalPassing();
    ~SignalPassing();
    SignalPassing(const SignalPassing&) = delete;
    SignalPassing& operator=(const SignalPassing&) = delete;

    // Readable when a signal is pending.
    int descriptor() const { return mSignals.get(); }
    // Receives the pending signals and sends them to the process, except those that the terminal
    // has sent to the program as well.
    void pass(pid_t process);
    // The first signal received so far, 0 when there was none.
    int received() const { return mReceived; }

  private:
    sigset_t mFormerMask = {};
    android::base::unique_fd mSignals;
    int mReceived = 0;
};

}  // namespace desk
