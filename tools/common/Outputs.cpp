#include "common/Outputs.h"

#include <unistd.h>

#include "common/StandardStreams.h"
#include "report/page/Page.h"

namespace desk {

namespace {

// A bar would run into lines that others write to standard error.
bool wantsProgress(const CommonOptions& options) {
    return !options.isLive && isatty(STDERR_FILENO) != 0 && options.logFile != "-" &&
           options.ulogFile != "-";
}

}  // namespace

Outputs::Outputs(const CommonOptions& options, const std::string& session,
                 std::optional<uint64_t> inputSize)
    : mFormat(options.format),
      mIsQuiet(options.isQuiet),
      mOutput(options.outputFile ? LineSink::toFile(*options.outputFile)
                                 : LineSink::toStandardOutput()),
      mLogs(options) {
    if (options.traceFile) {
        mTraceFile = LineSink::toFile(*options.traceFile);
        mTrace = std::make_unique<TraceWriter>(mTraceFile, TraceSource{session, options.tuning});
    }
    if (options.reportFile) {
        mPageFile = LineSink::toFile(*options.reportFile);
        mPage = std::make_unique<PageRecorder>();
        mAnalysis.tell(*mPage);
    }
    if (wantsProgress(options)) {
        mProgress = std::make_unique<Progress>(inputSize, mOutput);
    }
    if (!options.isQuiet) {
        const CommandPrinter::Place place = {options.outputFile ? -1 : STDOUT_FILENO,
                                             options.isLive ? "call" : "line"};
        mPrinter = std::make_unique<CommandPrinter>(mOutput, place, options.format, options.filter,
                                                    [this] {
                                                        if (mProgress != nullptr) {
                                                            mProgress->erase();
                                                        }
                                                    });
    }
}

std::vector<CallListener*> Outputs::listeners() {
    std::vector<CallListener*> listeners = {&mAnalysis};
    for (CallListener* listener :
         {static_cast<CallListener*>(mPrinter.get()), static_cast<CallListener*>(mTrace.get()),
          static_cast<CallListener*>(mPage.get()), static_cast<CallListener*>(mProgress.get())}) {
        if (listener != nullptr) {
            listeners.push_back(listener);
        }
    }
    return listeners;
}

void Outputs::printSummary(const Summary& summary) {
    if (mProgress != nullptr) {
        mProgress->erase();
    }
    if (mFormat == PrintFormat::JsonLines) {
        mOutput->writeLine(formatSummaryJson(summary));
        return;
    }
    if (!mIsQuiet) {
        mOutput->writeLine("");
    }
    mOutput->write(formatSummaryText(summary));
}

void Outputs::writePage(const Summary& summary) {
    if (mPage != nullptr) {
        mPageFile->write(formatPage(summary, *mPage));
    }
}

std::vector<std::string> Outputs::finish() {
    if (mTrace != nullptr) {
        mTrace->finish();
    }
    std::vector<std::shared_ptr<LineSink>> files = mLogs.sinks();
    files.push_back(mOutput);
    if (mTraceFile != nullptr) {
        files.push_back(mTraceFile);
    }
    if (mPageFile != nullptr) {
        files.push_back(mPageFile);
    }
    std::vector<std::string> failures;
    for (const auto& file : files) {
        if (!file->close() && !file->isAbandoned()) {
            failures.push_back(describeFailure(*file));
        }
    }
    return failures;
}

}  // namespace desk
