#include "Replay.h"

#include <cutils/properties.h>
#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>

#include "ExitStatus.h"
#include "driver/DriverModel.h"
#include "log/DeskLog.h"
#include "play/InterruptWatcher.h"
#include "play/Player.h"
#include "report/CommandPrinter.h"
#include "report/Progress.h"
#include "report/Summary.h"
#include "report/TraceWriter.h"
#include "session/BlockQueue.h"
#include "session/SessionReader.h"
#include "tuning/TuningLoader.h"
#include "tuning/TuningPlatform.h"
#include "ulogger/DeskULogger.h"

namespace desk {

namespace {

using std::chrono::steady_clock;

void setUpTuning(const std::string& folder) {
    TuningResult result = loadTuning(folder);
    if (const auto* error = std::get_if<TuningError>(&result)) {
        throw std::runtime_error(error->text());
    }
    installTuning(std::get<std::shared_ptr<const TuningData>>(std::move(result)));
}

void requireWritten(bool isWritten, const std::string& name) {
    if (!isWritten) {
        throw std::runtime_error(name + ": could not be written in full");
    }
}

// The log and the logger for as long as the session is played.
class Logs {
  public:
    explicit Logs(const Options& options) {
        constexpr uint32_t kAndroidLog = 1;
        constexpr uint32_t kLogger = 2;
        uint32_t mode = 0;
        if (options.logFile) {
            mLog = openSink(*options.logFile);
            setAndroidLog(mLog);
            mode |= kAndroidLog;
        }
        if (options.ulogFile) {
            mUlog = options.ulogFile == options.logFile ? mLog : openSink(*options.ulogFile);
            mLogger = std::make_unique<DeskULogger>(mUlog);
            mode |= kLogger;
        }
        setULogger(mLogger.get(), everyMessage(mode));
    }

    ~Logs() {
        setULogger(nullptr, {});
        setAndroidLog(nullptr);
    }

    Logs(const Logs&) = delete;
    Logs& operator=(const Logs&) = delete;

    // Throws when a message could not be written in full.
    void requireWritten(const Options& options) const {
        desk::requireWritten(mLog == nullptr || mLog->flush(), options.logFile.value_or(""));
        desk::requireWritten(mUlog == nullptr || mUlog->flush(), options.ulogFile.value_or(""));
    }

  private:
    static std::shared_ptr<LineSink> openSink(const std::string& path) {
        return path == "-" ? LineSink::toStandardError() : LineSink::toFile(path);
    }

    std::shared_ptr<LineSink> mLog;
    std::shared_ptr<LineSink> mUlog;
    std::unique_ptr<DeskULogger> mLogger;
};

// Reads the session into the queue on a thread of its own.
class ReaderThread {
  public:
    ReaderThread(InputFile& input, BlockQueue& queue) : mInput(input), mQueue(queue) {
        mThread = std::thread([this] { read(); });
    }

    ~ReaderThread() {
        mInput.stop();
        mQueue.close();
        mThread.join();
    }

    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

  private:
    void read() {
        SessionReader reader(mInput);
        for (bool isLast = false; !isLast;) {
            SessionBlock block = reader.next();
            isLast = block.isLast;
            if (!mQueue.push(std::move(block))) {
                return;
            }
        }
    }

    InputFile& mInput;
    BlockQueue& mQueue;
    std::thread mThread;
};

// A bar would run into lines that others write to standard error.
bool wantsProgress(const Options& options) {
    return isatty(STDERR_FILENO) != 0 && options.logFile != "-" && options.ulogFile != "-";
}

// Everybody who hears of the calls, in the order in which they have to.
struct Listeners {
    Listeners(const Options& options, std::optional<uint64_t> sessionSize) {
        if (wantsProgress(options)) {
            progress = std::make_unique<Progress>(sessionSize);
        }
        if (options.traceFile) {
            trace = std::make_unique<TraceWriter>(*options.traceFile);
        }
        if (!options.isQuiet) {
            printer = std::make_unique<CommandPrinter>(stdout, options.format,
                                                       [this] { eraseProgress(); });
        }
    }

    Listeners(const Listeners&) = delete;
    Listeners& operator=(const Listeners&) = delete;

    // No row may begin behind the bar.
    void eraseProgress() const {
        if (progress != nullptr) {
            progress->erase();
        }
    }

    std::vector<CallListener*> all() {
        std::vector<CallListener*> listeners = {&statistics};
        for (CallListener* listener :
             {static_cast<CallListener*>(printer.get()), static_cast<CallListener*>(trace.get()),
              static_cast<CallListener*>(progress.get())}) {
            if (listener != nullptr) {
                listeners.push_back(listener);
            }
        }
        return listeners;
    }

    Statistics statistics;
    std::unique_ptr<Progress> progress;
    std::unique_ptr<CommandPrinter> printer;
    std::unique_ptr<TraceWriter> trace;
};

PlayResult playSession(InputFile& input, const Options& options, Listeners& listeners) {
    BlockQueue queue;
    Player player(queue, options.speed, listeners.all());
    const InterruptWatcher interrupts([&player] { player.stop(); });
    const ReaderThread reader(input, queue);
    return player.play();
}

int exitStatus(const Summary& summary) {
    if (summary.error) {
        return kExitBadInput;
    }
    if (summary.isStopped) {
        return kExitInterrupted;
    }
    return summary.isAsExpected() ? kExitAsExpected : kExitUnexpected;
}

void printSummary(const Summary& summary, const Options& options) {
    if (options.format == PrintFormat::JsonLines) {
        fmt::print("{}\n", formatSummaryJson(summary));
    } else {
        fmt::print("{}{}", options.isQuiet ? "" : "\n", formatSummaryText(summary));
    }
}

}  // namespace

int replay(const Options& options) {
    InputFile input(options.session);
    setUpTuning(options.tuning);
    for (const auto& [name, value] : options.properties) {
        property_set(name.c_str(), value.c_str());
    }
    controlNode().injectFaults(options.injectedFaults);
    const Logs logs(options);
    Listeners listeners(options, input.size());

    const auto start = steady_clock::now();
    const PlayResult result = playSession(input, options, listeners);
    const std::chrono::duration<double> played = steady_clock::now() - start;

    listeners.eraseProgress();
    const Summary summary = summarize(input.name(), listeners.statistics, controlNode().snapshot(),
                                      result, played.count());
    printSummary(summary, options);
    if (summary.error) {
        std::fflush(stdout);
        fmt::print(stderr, "{}\n", *summary.error);
    }
    requireWritten(std::fflush(stdout) == 0 && std::ferror(stdout) == 0, "standard output");
    requireWritten(listeners.trace == nullptr || listeners.trace->finish(),
                   options.traceFile.value_or(""));
    logs.requireWritten(options);
    return exitStatus(summary);
}

}  // namespace desk
