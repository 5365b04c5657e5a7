#include "report/Summary.h"

#include <fmt/format.h>

#include <algorithm>

#include "report/CountText.h"

namespace desk {

namespace {

std::vector<ActiveRun> activeRunsOf(const Statistics& statistics, const DriverSnapshot& driver) {
    std::vector<ActiveRun> runs;
    for (const RunningThread& running : driver.running) {
        ActiveRun run;
        run.thread = statistics.threadName(running.tid);
        run.sinceUs = statistics.runStartUs(running.tid, running.uniqueTaskId);
        if (const TaskStatistics* task = statistics.findTask(running.uniqueTaskId)) {
            run.task = task->task;
            run.name = task->name;
        }
        runs.push_back(std::move(run));
    }
    return runs;
}

std::vector<ActiveSpan> activeSpansOf(const Statistics& statistics, const DriverSnapshot& driver) {
    std::vector<ActiveSpan> spans;
    for (const CriticalSpan& span : driver.spans) {
        spans.push_back({statistics.threadName(span.tid), span.criticalValue,
                         statistics.spanStartUs(span.tid)});
    }
    return spans;
}

}  // namespace

std::string Summary::unexpected() const {
    uint64_t failed = 0;
    uint64_t firstLine = 0;
    for (const CallStatistics& operation : operations) {
        if (operation.failed > 0) {
            firstLine = failed == 0 ? operation.firstFailedLine
                                    : std::min(firstLine, operation.firstFailedLine);
            failed += operation.failed;
        }
    }
    uint64_t refused = driver.opens.refused + driver.closes.refused + driver.otherRequests.refused;
    for (const CallCounters& counters : driver.commands) {
        refused += counters.refused;
    }
    std::vector<std::string> parts;
    if (failed > 0) {
        parts.push_back(fmt::format("{} returned -1 unexpectedly, the first in line {}",
                                    countOf(failed, "call"), firstLine));
    }
    if (refused > 0) {
        parts.push_back(fmt::format("the driver found fault with {}", countOf(refused, "command")));
    }
    return fmt::format("{}", fmt::join(parts, "; "));
}

Summary summarize(const std::string& session, const Statistics& statistics,
                  const DriverSnapshot& driver, const PlayResult& result, double playedSeconds) {
    Summary summary;
    summary.session = session;
    summary.calls = statistics.calls();
    summary.threads = statistics.threads();
    summary.recordedUs = statistics.recordedUs();
    summary.playedSeconds = playedSeconds;
    summary.isStopped = result.isStopped;
    summary.error = result.error;
    summary.cutOff = result.cutOff;
    summary.driver = driver;
    summary.operations = statistics.byOperation();
    for (const auto& [number, task] : statistics.byTask()) {
        summary.tasks.push_back(task);
    }
    summary.activeRuns = activeRunsOf(statistics, driver);
    summary.activeSpans = activeSpansOf(statistics, driver);
    return summary;
}

}  // namespace desk
