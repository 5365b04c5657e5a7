#include "play/InterruptWatcher.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "ExitStatus.h"

namespace desk {

namespace {

sigset_t interrupts() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

sigset_t blockInterrupts() {
    const sigset_t signals = interrupts();
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    return former;
}

int openSignals() {
    const sigset_t signals = interrupts();
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

}  // namespace

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt)
    : mOnInterrupt(std::move(onInterrupt)),
      mFormerMask(blockInterrupts()),
      mSignals(openSignals()) {
    if (mSignals.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot watch for Ctrl-C");
    }
    mThread = std::thread([this] { watch(); });
}

InterruptWatcher::~InterruptWatcher() {
    mEnd.set();
    mThread.join();
    pthread_sigmask(SIG_SETMASK, &mFormerMask, nullptr);
}

void InterruptWatcher::watch() {
    bool isInterrupted = false;
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
        if (std::exchange(isInterrupted, true)) {
            std::_Exit(kExitInterrupted);
        }
        mOnInterrupt();
    }
}

}  // namespace desk
