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
        const bool isOfTerminal = info.ssi_code == SI_KERNEL;
        if (process > 0 && !isOfTerminal) {
            kill(process, signal);
        }
    }
}

}  // namespace desk
