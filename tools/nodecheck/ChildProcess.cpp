#include "nodecheck/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace nodecheck {

ChildProcess::ChildProcess(const std::function<void(const Ready&)>& work) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "no pipe to a process");
    }
    const pid_t parent = getpid();
    mId = fork();
    if (mId < 0) {
        throw std::system_error(errno, std::generic_category(), "no process");
    }
    if (mId == 0) {
        // A signal may end the parent before it comes to kill this process.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(0);
        }
        close(ends[0]);
        work([&] { close(ends[1]); });
        _exit(0);
    }
    close(ends[1]);
    char nothing = 0;
    while (read(ends[0], &nothing, 1) < 0 && errno == EINTR) {
        // A signal handler ran.
    }
    close(ends[0]);
}

ChildProcess::~ChildProcess() {
    kill();
}

void ChildProcess::kill() {
    if (!mIsEnded) {
        ::kill(mId, SIGKILL);
        waitpid(mId, nullptr, 0);
        mIsEnded = true;
    }
}

}  // namespace nodecheck
