#include "run/Run.h"

#include <android-base/file.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

#include "common/Desk.h"
#include "common/OutputFiles.h"
#include "common/Outputs.h"
#include "common/StandardStreams.h"
#include "report/CountText.h"
#include "run/InstalledFiles.h"
#include "run/LiveServer.h"
#include "run/LiveSession.h"
#include "run/Program.h"
#include "run/Recording.h"
#include "run/SignalPassing.h"

namespace desk {

namespace {

constexpr const char* kProgram = "velk-run";

void refuseToOverwriteInputs(const RunOptions& options) {
    std::vector<NamedFile> outputs = outputFilesOf(options.common);
    if (options.recording) {
        outputs.push_back({"--record", *options.recording});
    }
    std::vector<NamedFile> inputs = inputFilesOf(options.common);
    inputs.push_back({"standard input", "-", STDIN_FILENO});
    inputs.push_back({"the program", options.program.front()});
    // It may read, or write, the files that its arguments name.
    for (auto word = options.program.begin() + 1; word != options.program.end(); ++word) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(*word, ignored)) {
            inputs.push_back({"an argument of the program", *word});
        }
    }
    refuseSharedFiles(inputs, outputs);
}

// The program may see other files than this process does, so it gets the texts. None of a file that
// is not there. Throws std::system_error when it cannot be read.
std::optional<std::string> textOf(const std::filesystem::path& file) {
    std::string text;
    constexpr bool kFollowLinks = true;
    if (android::base::ReadFileToString(file, &text, kFollowLinks)) {
        return text;
    }
    if (errno != ENOENT) {
        throw std::system_error(errno, std::generic_category(), file);
    }
    return std::nullopt;
}

Setup setupOf(const CommonOptions& options) {
    const std::filesystem::path tuning = options.tuning;
    Setup setup;
    setup.hasLog = options.logFile.has_value();
    setup.hasUlog = options.ulogFile.has_value();
    setup.hasTrace = options.traceFile.has_value();
    setup.faults = options.injectedFaults;
    setup.tuning.platform = textOf(tuning / kTuningFiles[0]).value_or("");
    setup.tuning.customer = textOf(tuning / kTuningFiles[1]);
    setup.tuning.settings = textOf(tuning / kTuningFiles[2]);
    setup.properties = options.properties;
    return setup;
}

Start startOf(const RunOptions& options, const std::string& socketName) {
    Start start;
    start.words = options.program;
    start.variables.push_back(fmt::format("{}={}", kSocketVariable, socketName));
    // The recorder is first: in exact order calls wait in it, and the agent sees them after that.
    if (options.recording) {
        start.libraries.push_back(deskLibrary("libvelkrecord.so"));
        start.variables.push_back("VELK_RECORD=" +
                                  std::filesystem::absolute(*options.recording).string());
        start.variables.emplace_back("VELK_RECORD_KEEP=1");
    }
    start.libraries.push_back(deskLibrary("libvelklive.so"));
    start.libraries.push_back(deskLibrary("libvelknode.so"));
    return start;
}

// A running program and the calls that it reports.
class LiveRun {
  public:
    LiveRun(const RunOptions& options, Outputs& outputs)
        : mLogs(outputs.logs()),
          mSession(outputs.listeners()),
          mServer(std::in_place, setupOf(options.common),
                  [this](FrameKind kind, std::string_view content) { take(kind, content); }) {
        mProgram.emplace(startOf(options, mServer->name()));
    }

    // Until the program and the process that is followed have both ended.
    void follow() {
        while (!mHasProgramEnded || isFollowing()) {
            waitForAny();
            if (mWaiting[kSignals].revents != 0) {
                takeSignals();
            }
            mServer->receive();
            if (mWaiting[kFollowed].revents != 0) {
                mHasFollowedEnded = true;
            }
            if (mWaiting[kStarted].revents != 0) {
                takeEnd();
            }
        }
        while (mServer->receive()) {
        }
        mSession.finish();
    }

    // After an error: closes the connection, so that the program does not wait for this process.
    void letGo() {
        mServer.reset();
        if (!mHasProgramEnded) {
            mProgram->await();
        }
    }

    const LiveSession& session() const { return mSession; }
    const Program& program() const { return *mProgram; }
    // Whether the program could not send all its calls.
    bool isLost() const { return mIsLost; }
    bool isInterrupted() const { return mSignals.received() != 0; }

  private:
    enum Place : uint8_t { kSignals, kStarted, kFollowed };

    bool isFollowing() const {
        return mServer->followed() != 0 && !mHasFollowedEnded && !mIsToStop &&
               mServer->followedDescriptor() >= 0;
    }

    void waitForAny() {
        const auto patience = mSession.advance();
        mWaiting = {{mSignals.descriptor(), POLLIN, 0},
                    {mHasProgramEnded ? -1 : mProgram->descriptor(), POLLIN, 0},
                    {mHasFollowedEnded ? -1 : mServer->followedDescriptor(), POLLIN, 0}};
        mServer->addTo(mWaiting);
        if (poll(mWaiting.data(), mWaiting.size(), 0) == 0) {
            mSession.wait();
            poll(mWaiting.data(), mWaiting.size(),
                 patience ? static_cast<int>(patience->count()) : -1);
        }
    }

    void take(FrameKind kind, std::string_view content) {
        if (kind == FrameKind::Call) {
            mSession.take(content);
        } else if (kind == FrameKind::Lost) {
            mIsLost = true;
            sayError(kProgram, fmt::format("process {}: its further calls are not shown: {}",
                                           mServer->followed(), content));
        } else if (LineSink* const log = kind == FrameKind::Log ? mLogs.log() : mLogs.ulog()) {
            log->write(content);
        }
    }

    void takeSignals() {
        mSignals.pass(mHasProgramEnded ? 0 : mProgram->process());
        mIsToStop = mHasProgramEnded;
    }

    void takeEnd() {
        mProgram->await();
        mHasProgramEnded = true;
        if (isFollowing() && mServer->followed() != mProgram->process()) {
            sayError(kProgram, fmt::format("the program has ended; process {}, which it started, "
                                           "is followed to its end",
                                           mServer->followed()));
        }
    }

    SignalPassing mSignals;
    std::optional<Program> mProgram;
    bool mHasProgramEnded = false;
    bool mHasFollowedEnded = false;
    bool mIsToStop = false;
    bool mIsLost = false;
    const Logs& mLogs;
    LiveSession mSession;
    std::optional<LiveServer> mServer;
    std::vector<pollfd> mWaiting;
};

// Reports where less was seen than the user may expect.
void sayWhatIsMissing(const std::string& program, const std::string& ending,
                      const LiveSession& session) {
    if (session.foreignCommands() > 0) {
        sayError(kProgram,
                 fmt::format("{} went to the driver outside of the library's calls: {} links the "
                             "library statically, or sends them itself",
                             countOf(session.foreignCommands(), "command"), program));
    } else if (session.calls() == 0) {
        sayError(kProgram, fmt::format("{} made no call to the library; it {}", program, ending));
    }
}

// Whether every call that was seen is in the recording too.
bool isRecordingWhole(const RunOptions& options, const LiveSession& session) {
    if (!options.recording) {
        return true;
    }
    try {
        const uint64_t recorded = endRecording(*options.recording);
        if (recorded < session.calls()) {
            sayError(kProgram, fmt::format("{}: holds {} of {}", *options.recording, recorded,
                                           countOf(session.calls(), "call")));
        }
        return recorded >= session.calls();
    } catch (const std::system_error& error) {
        sayError(kProgram, fmt::format("the recording cannot be checked: {}", error.what()));
        return false;
    }
}

bool follow(LiveRun& live) {
    try {
        live.follow();
        return true;
    } catch (const std::exception& error) {
        sayError(kProgram, fmt::format("the rest of the program is not shown: {}", error.what()));
        live.letGo();
        return false;
    }
}

}  // namespace

int run(const RunOptions& given) {
    RunOptions options = given;
    refuseUnseen(options.program.front());
    if (options.common.tuning.empty()) {
        options.common.tuning = sampleTuning();
        sayError(kProgram,
                 fmt::format("no --tuning: the sample's is used, {}", options.common.tuning));
    }
    refuseToOverwriteInputs(options);
    setUpDesk(kProgram, options.common);
    if (options.recording) {
        emptyRecording(*options.recording);
    }
    Outputs outputs(options.common, options.program.front(), std::nullopt);
    LiveRun live(options, outputs);
    bool isWhole = follow(live);

    const std::string& name = options.program.front();
    const bool isEmpty = live.session().calls() + live.session().foreignCommands() == 0;
    const Summary summary =
            summarizeProgram(name, live.program().ending(), live.isInterrupted(),
                             outputs.analysis().figures(), live.session().snapshot());
    if (!isEmpty || options.common.format == PrintFormat::JsonLines) {
        outputs.printSummary(summary);
    }
    outputs.writePage(summary);
    const std::vector<std::string> failures = outputs.finish();
    sayWhatIsMissing(name, live.program().ending(), live.session());
    if (const std::string unexpected = summary.unexpected(); !unexpected.empty()) {
        sayError(kProgram, unexpected);
    }
    for (const std::string& failure : failures) {
        sayError(kProgram, failure);
    }
    const bool isRecorded = isRecordingWhole(options, live.session());
    isWhole = isWhole && !live.isLost() && failures.empty() && isRecorded;
    const int status = live.program().status();
    if (status < 0) {
        endBySignal(-status);
    }
    return status == 0 && !isWhole ? kExitToolFailed : status;
}

}  // namespace desk
