#include "report/Summary.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "report/CountText.h"

namespace desk {

std::string Summary::unexpected() const {
    uint64_t failed = 0;
    uint64_t firstLine = 0;
    for (const OperationFigures& operation : figures.operations) {
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
        parts.push_back(fmt::format("{} returned -1 unexpectedly, the first in {} {}",
                                    countOf(failed, "call"), unit(), firstLine));
    }
    if (refused > 0) {
        parts.push_back(fmt::format("the driver found fault with {}", countOf(refused, "command")));
    }
    return fmt::format("{}", fmt::join(parts, "; "));
}

Summary summarize(const std::string& session, SessionFigures figures, const DriverSnapshot& driver,
                  const PlayResult& result, double playedSeconds) {
    Summary summary;
    summary.session = session;
    summary.playedSeconds = playedSeconds;
    summary.isStopped = result.isStopped;
    summary.error = result.error;
    summary.cutOff = result.cutOff;
    summary.figures = std::move(figures);
    summary.driver = driver;
    return summary;
}

Summary summarizeProgram(const std::string& program, const std::string& ending, bool isStopped,
                         SessionFigures figures, const DriverSnapshot& driver) {
    Summary summary;
    summary.session = program;
    summary.ending = ending;
    summary.isStopped = isStopped;
    summary.figures = std::move(figures);
    summary.driver = driver;
    return summary;
}

}  // namespace desk
