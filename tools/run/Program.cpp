#include "run/Program.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace desk {

namespace {

// Those that this process ignores for itself.
constexpr int kIgnoredHere[] = {SIGPIPE, SIGXFSZ};

sigset_t gToDefault;
sigset_t gFormerMask;

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

// The environment with libraries added at the end of LD_PRELOAD: those in it may have to be first.
std::vector<std::string> environmentOf(const Start& start) {
    constexpr std::string_view kPreload = "LD_PRELOAD=";
    const std::string libraries = fmt::format("{}", fmt::join(start.libraries, ":"));
    std::string preload(kPreload);
    std::vector<std::string> variables = start.variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (text.starts_with(kPreload)) {
            preload = std::string(text) + ":";
            continue;
        }
        const std::string_view name = text.substr(0, text.find('=') + 1);
        const bool isReplaced = std::ranges::any_of(
                start.variables,
                [name](const std::string& other) { return other.starts_with(name); });
        if (!isReplaced) {
            variables.emplace_back(text);
        }
    }
    variables.push_back(preload + libraries);
    return variables;
}

}  // namespace

void rememberSignals() {
    sigemptyset(&gToDefault);
    for (const int signal : kIgnoredHere) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            sigaddset(&gToDefault, signal);
        }
    }
    pthread_sigmask(SIG_SETMASK, nullptr, &gFormerMask);
}

Program::Program(const Start& start) {
    std::vector<std::string> words = start.words;
    std::vector<std::string> variables = environmentOf(start);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setsigmask(&attributes, &gFormerMask);
    posix_spawnattr_setsigdefault(&attributes, &gToDefault);
    const int error = posix_spawnp(&mProcess, words.front().c_str(), nullptr, &attributes,
                                   pointers(words).data(), pointers(variables).data());
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        mProcess = -1;
        throw ProgramError(error == ENOENT ? kExitNotFound : kExitNotExecutable,
                           fmt::format("{}: {}", start.words.front(), std::strerror(error)));
    }
    mDescriptor.reset(static_cast<int>(syscall(SYS_pidfd_open, mProcess, 0)));
    if (!mDescriptor.ok()) {
        const int reason = errno;
        kill(mProcess, SIGKILL);
        await();
        throw ProgramError(kExitToolFailed,
                           fmt::format("the program cannot be watched: {}", std::strerror(reason)));
    }
}

Program::~Program() {
    if (mProcess > 0 && !mWaitStatus) {
        await();
    }
}

void Program::await() {
    int status = 0;
    while (waitpid(mProcess, &status, 0) < 0 && errno == EINTR) {
    }
    mWaitStatus = status;
}

std::string Program::ending() const {
    if (!mWaitStatus) {
        return "still running";
    }
    if (!WIFSIGNALED(*mWaitStatus)) {
        return fmt::format("exited with {}", WEXITSTATUS(*mWaitStatus));
    }
    const char* const name = sigabbrev_np(WTERMSIG(*mWaitStatus));
    return name != nullptr ? fmt::format("ended by SIG{}", name)
                           : fmt::format("ended by signal {}", WTERMSIG(*mWaitStatus));
}

int Program::status() const {
    const int status = mWaitStatus.value_or(0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

void endBySignal(int signal) {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    kill(getpid(), signal);
    _exit(128 + signal);  // the signal did not end this process
}

}  // namespace desk
