#include "report/Summary.h"

#include <algorithm>

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

bool Summary::isAsExpected() const {
    const bool hasFailed =
            std::any_of(operations.begin(), operations.end(),
                        [](const CallStatistics& operation) { return operation.failed > 0; });
    const bool hasFault =
            driver.opens.refused > 0 || driver.closes.refused > 0 ||
            driver.otherRequests.refused > 0 ||
            std::any_of(driver.commands.begin(), driver.commands.end(),
                        [](const CallCounters& counters) { return counters.refused > 0; });
    return !hasFailed && !hasFault;
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
