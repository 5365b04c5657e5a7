/*
 * The signals that ask velk-run to end: they are for the program.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <sys/types.h>

#include <csignal>

namespace desk {

// Takes in SIGHUP, SIGINT, SIGQUIT and SIGTERM from its making to its end; one that this process
// has had ignored stays ignored. Not for several threads.
class SignalPassing {
  public:
    // Throws std::system_error.
    SignalPassing();
    ~SignalPassing();
    SignalPassing(const SignalPassing&) = delete;
    SignalPassing& operator=(const SignalPassing&) = delete;

    // Readable when one has come.
    int descriptor() const { return mSignals.get(); }
    // Takes the signals in that have come, and sends them on to the process. Those of the terminal
    // have gone to the program too.
    void pass(pid_t process);
    // The first signal so far, 0 when there was none.
    int received() const { return mReceived; }

  private:
    sigset_t mFormerMask = {};
    android::base::unique_fd mSignals;
    int mReceived = 0;
};

}  // namespace desk
