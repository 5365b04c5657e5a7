#include "tune/SessionReplay.h"

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "log/LineSink.h"
#include "play/ReadAndPlay.h"
#include "report/Progress.h"
#include "tuning/TuningPlatform.h"

namespace desk {

namespace {

using android::base::unique_fd;
using nlohmann::ordered_json;

constexpr const char* kError = "error";

ordered_json play(const std::string& session, const std::shared_ptr<const TuningData>& tuning,
                  Evaluation& evaluation) {
    InputFile input(session);
    installTuning(tuning);
    std::vector<CallListener*> listeners = {&evaluation};
    std::optional<Progress> progress;
    if (isatty(STDERR_FILENO) != 0) {
        progress.emplace(input.size(), LineSink::toStandardOutput());
        listeners.push_back(&*progress);
    }
    BlockQueue queue;
    Player player(queue, std::nullopt, listeners);
    const PlayResult result = readAndPlay(input, queue, player);
    if (progress) {
        progress->erase();
    }
    if (result.error) {
        throw std::runtime_error(*result.error);
    }
    return evaluation.result();
}

// False when the other end of the pipe is closed.
bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            return false;
        }
    }
    return true;
}

[[noreturn]] void playAndTell(const std::string& session,
                              const std::shared_ptr<const TuningData>& tuning,
                              Evaluation& evaluation, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    ordered_json told;
    try {
        told = play(session, tuning, evaluation);
    } catch (const std::exception& error) {
        told = {{kError, error.what()}};
    }
    const bool isTold =
            writeAll(output, told.dump(-1, ' ', true, ordered_json::error_handler_t::replace));
    _exit(isTold ? 0 : 1);
}

int statusOf(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "cannot wait for a replay");
        }
    }
    return status;
}

// Ends this process by the signal that ended the replay.
void passOn(int signal) {
    if (signal == SIGHUP || signal == SIGINT || signal == SIGTERM) {
        std::signal(signal, SIG_DFL);
        raise(signal);
    }
}

}  // namespace

ordered_json replayApart(const std::string& session,
                         const std::shared_ptr<const TuningData>& tuning, Evaluation& evaluation) {
    unique_fd input;
    unique_fd output;
    if (!android::base::Pipe(&input, &output)) {
        throw std::system_error(errno, std::generic_category(), "cannot create a pipe to a replay");
    }
    const pid_t process = fork();
    if (process < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot start a replay");
    }
    if (process == 0) {
        input.reset();
        playAndTell(session, tuning, evaluation, output.get());
    }
    output.reset();
    std::string text;
    const bool isRead = android::base::ReadFdToString(input, &text);
    const int readError = errno;
    input.reset();
    const int status = statusOf(process);
    passOn(WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    if (!isRead || status != 0) {
        throw std::runtime_error(fmt::format(
                "{}: the replay has sent no result ({})", session,
                WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : std::strerror(readError)));
    }
    ordered_json told = ordered_json::parse(text);
    if (told.contains(kError)) {
        throw std::runtime_error(told.at(kError).get<std::string>());
    }
    return told;
}

}  // namespace desk
