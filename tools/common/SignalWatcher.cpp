#include "common/SignalWatcher.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "common/ExitStatus.h"
#include "common/SignalSet.h"

namespace desk {

namespace {

sigset_t block(const sigset_t& signals) {
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    return former;
}

}  // namespace

SignalWatcher::SignalWatcher(std::function<void()> onSignal)
    : mOnSignal(std::move(onSignal)),
      mWatched(signalsNotIgnored({SIGHUP, SIGINT, SIGTERM})),
      mFormerMask(block(mWatched)),
      mSignals(signalfd(-1, &mWatched, SFD_CLOEXEC)) {
    if (mSignals.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot watch for signals");
    }
    mThread = std::thread([this] { watch(); });
}

SignalWatcher::~SignalWatcher() {
    mEnd.set();
    mThread.join();
    pthread_sigmask(SIG_SETMASK, &mFormerMask, nullptr);
}

void SignalWatcher::watch() {
    while (true) {
        std::array<pollfd, 2> waiting = {{{mSignals.get(), POLLIN, 0}, {mEnd.get(), POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), -1) < 0) {
            continue;
        }
        if (waiting[1].revents != 0) {
            return;
        }
        signalfd_siginfo info;
        if (read(mSignals.get(), &info, sizeof info) != sizeof info) {
            continue;
        }
        const auto signal = static_cast<int>(info.ssi_signo);
        if (mReceived != 0) {
            std::_Exit(exitStatusOfSignal(signal));
        }
        mReceived = signal;
        mOnSignal();
    }
}

}  // namespace desk
