#include "Replay.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "KernelWatch.h"
#include "common/Desk.h"
#include "common/ExitStatus.h"
#include "common/OutputFiles.h"
#include "common/Outputs.h"
#include "common/SignalWatcher.h"
#include "common/StandardStreams.h"
#include "driver/DriverModel.h"
#include "play/ReadAndPlay.h"

namespace desk {

namespace {

using std::chrono::steady_clock;

constexpr const char* kProgram = "velk-replay";

void refuseToOverwriteInputs(const Options& options) {
    std::vector<NamedFile> inputs = inputFilesOf(options.common);
    inputs.push_back({"the session", options.session, options.session == "-" ? STDIN_FILENO : -1});
    refuseSharedFiles(inputs, outputFilesOf(options.common));
}

// Keeps what the session sets without an effect, to be said when nothing is drawn on the terminal.
class PropertyDoubts : public CallListener {
  public:
    void onCall(const PlayedCall& played) override {
        constexpr size_t kMost = 10;
        const CallArguments& arguments = played.call->arguments;
        if (!arguments.name || !arguments.value || mLines.size() == kMost) {
            return;
        }
        const std::string doubt = doubtAboutProperty(*arguments.name, *arguments.value);
        if (!doubt.empty()) {
            mLines.try_emplace(doubt, played.call->line);
        }
    }
    void say(const std::string& session) const {
        for (const auto& [doubt, line] : mLines) {
            sayError(kProgram, fmt::format("warning: {}:{}: {}", session, line, doubt));
        }
    }

  private:
    std::map<std::string, uint64_t> mLines;  // the first one of each doubt
};

// A session without a call is an error unless it is empty, and then it is to be said.
void judgeSilence(const InputFile& input, uint64_t calls, PlayResult& result) {
    if (calls > 0 || result.isStopped || result.error) {
        return;
    }
    if (input.hasContent()) {
        result.error = fmt::format("{}: no call in it, expected one a line", input.name());
    } else {
        sayError(kProgram, fmt::format("{}: empty, there is no call to play", input.name()));
    }
}

int exitStatus(const Summary& summary, const std::optional<KernelWatch>& kernel, int signal) {
    if (summary.error) {
        return kExitBadInput;
    }
    if (signal != 0) {
        return exitStatusOfSignal(signal);
    }
    const bool isAnswerDifferent = kernel && kernel->differences() > 0;
    return summary.unexpected().empty() && !isAnswerDifferent ? kExitAsExpected : kExitUnexpected;
}

}  // namespace

int replay(const Options& options) {
    refuseToOverwriteInputs(options);
    InputFile input(options.session);
    std::optional<KernelWatch> kernel;
    if (options.isOnKernelNode) {
        kernel.emplace();
    }
    setUpDesk(kProgram, options.common);
    Outputs outputs(options.common, input.name(), input.size());
    BlockQueue queue;
    PropertyDoubts doubts;
    std::vector<CallListener*> listeners = outputs.listeners();
    listeners.push_back(&doubts);
    Player player(queue, options.speed, std::move(listeners));
    const SignalWatcher signals([&player] { player.stop(); });

    const auto start = steady_clock::now();
    PlayResult result = readAndPlay(input, queue, player);
    const std::chrono::duration<double> played = steady_clock::now() - start;

    SessionFigures figures = outputs.analysis().figures();
    judgeSilence(input, figures.calls, result);
    const Summary summary = summarize(input.name(), std::move(figures), controlNode().snapshot(),
                                      result, played.count());
    outputs.printSummary(summary);
    outputs.writePage(summary);
    if (kernel) {
        kernel->compareCounts(summary.driver);
    }
    const std::vector<std::string> failures = outputs.finish();
    doubts.say(input.name());
    if (summary.error) {
        sayError(kProgram, *summary.error);
    }
    if (const std::string unexpected = summary.unexpected(); !unexpected.empty()) {
        sayError(kProgram, unexpected);
    }
    for (const std::string& failure : failures) {
        sayError(kProgram, failure);
    }
    return failures.empty() ? exitStatus(summary, kernel, signals.received()) : kExitBadInput;
}

}  // namespace desk
