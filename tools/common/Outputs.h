/*
 * Everything that a tool writes while calls are made: table or JSON Lines, trace, logs, progress,
 * and at the end the summary and the page.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "analysis/SessionAnalysis.h"
#include "common/CommonOptions.h"
#include "common/Logs.h"
#include "report/CommandPrinter.h"
#include "report/Progress.h"
#include "report/Summary.h"
#include "report/TraceWriter.h"
#include "report/page/PageRecorder.h"

namespace desk {

// A failing write does not end the run: finish() reports it at the end.
class Outputs {
  public:
    // Opens the files. `session` is what the session is called, `inputSize` what the progress is
    // measured by, in bytes, if it is known. Throws std::system_error.
    Outputs(const CommonOptions& options, const std::string& session,
            std::optional<uint64_t> inputSize);
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    // The listeners of the calls, in the order in which they are notified.
    std::vector<CallListener*> listeners();
    const SessionAnalysis& analysis() const { return mAnalysis; }
    const Logs& logs() const { return mLogs; }

    void printSummary(const Summary& summary);
    // Where a page is asked for.
    void writePage(const Summary& summary);
    // Ends and closes every output. Returns "FILE: REASON" for each that could not be written in
    // full. A standard stream whose reader has gone counts as written.
    std::vector<std::string> finish();

  private:
    PrintFormat mFormat;
    bool mIsQuiet;
    std::shared_ptr<LineSink> mOutput;
    Logs mLogs;
    SessionAnalysis mAnalysis;
    std::unique_ptr<Progress> mProgress;
    std::unique_ptr<CommandPrinter> mPrinter;
    std::shared_ptr<LineSink> mTraceFile;
    std::unique_ptr<TraceWriter> mTrace;
    std::shared_ptr<LineSink> mPageFile;
    std::unique_ptr<PageRecorder> mPage;
};

}  // namespace desk
