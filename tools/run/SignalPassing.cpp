#include "run/SignalPassing.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "common/SignalSet.h"

namespace desk {

SignalPassing::SignalPassing() {
    const sigset_t signals = signalsNotIgnored({SIGHUP, SIGINT, SIGQUIT, SIGTERM});
    pthread_sigmask(SIG_BLOCK, &signals, &mFormerMask);
    mSignals.reset(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!mSignals.ok()) {
        const int error = errno;
        pthread_sigmask(SIG_SETMASK, &mFormerMask, nullptr);
        throw std::system_error(error, std::generic_category(), "cannot watch for signals");
    }
}

SignalPassing::~SignalPassing() {
    pthread_sigmask(SIG_SETMASK, &mFormerMask, nullptr);
}

void SignalPassing::pass(pid_t process) {
    signalfd_siginfo info = {};
    while (read(mSignals.get(), &info, sizeof info) == sizeof info) {
        const auto signal = static_cast<int>(info.ssi_signo);
        mReceived = mReceived != 0 ? mReceived : signal;
        // A terminal that closes tells the leader of its session alone.
        const bool isForLeader = signal == SIGHUP && getsid(0) == getpid();
        const bool hasProgramGotIt = info.ssi_code == SI_KERNEL && !isForLeader;
        if (process > 0 && !hasProgramGotIt) {
            kill(process, signal);
        }
    }
}

}  // namespace desk
