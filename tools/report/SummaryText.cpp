#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "driver/RecordCopy.h"
#include "report/Summary.h"

namespace desk {

namespace {

using Output = std::back_insert_iterator<std::string>;

constexpr double kUsPerMs = 1e3;
constexpr double kUsPerSecond = 1e6;

double milliseconds(int64_t us) {
    return static_cast<double>(us) / kUsPerMs;
}

void writeHead(Output out, const Summary& summary) {
    fmt::format_to(out, "Session {}\n", summary.session);
    fmt::format_to(out, "  {} calls on {} threads, {:.3f} s recorded, played in {:.3f} s",
                   summary.calls, summary.threads,
                   static_cast<double>(summary.recordedUs) / kUsPerSecond, summary.playedSeconds);
    if (summary.playedSeconds > 0) {
        fmt::format_to(out, " ({:.0f} calls/s)",
                       std::floor(static_cast<double>(summary.calls) / summary.playedSeconds));
    }
    fmt::format_to(out, "\n");
    if (summary.error) {
        fmt::format_to(out, "  ended early: {}\n", *summary.error);
    } else if (summary.isStopped) {
        fmt::format_to(out, "  ended early: interrupted\n");
    } else if (summary.cutOff) {
        fmt::format_to(out, "  the recording was cut off at {}: all calls before are played\n",
                       *summary.cutOff);
    }
}

void writeCounters(Output out, const std::string& name, const CallCounters& counters) {
    if (counters.accepted + counters.refused + counters.refusedInjected > 0) {
        fmt::format_to(out, "  {:<20}{:>10}{:>10}{:>10}{:>10}\n", name, counters.accepted,
                       counters.noted, counters.refused, counters.refusedInjected);
    }
}

void writeCommands(Output out, const DriverSnapshot& driver) {
    fmt::format_to(out, "\n{:<22}{:>10}{:>10}{:>10}{:>10}\n", "Commands", "accepted", "noted",
                   "refused", "injected");
    writeCounters(out, "   open", driver.opens);
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        writeCounters(out, fmt::format("{} {}", VELK_COMMANDS[i].number, VELK_COMMANDS[i].name),
                      driver.commands[i]);
    }
    writeCounters(out, "   other requests", driver.otherRequests);
    writeCounters(out, "   close", driver.closes);
}

void writeTasks(Output out, const std::vector<TaskStatistics>& tasks) {
    if (tasks.empty()) {
        return;
    }
    fmt::format_to(out, "\n{:<22}{:>10}{:>10}{:>10}{:>10}{:>10}{:>13}\n", "Tasks", "starts",
                   "ended", "target us", "mean us", "max us", "over target");
    for (const TaskStatistics& task : tasks) {
        const auto ends = static_cast<int64_t>(task.ends);
        const int64_t meanUs = ends > 0 ? task.totalRunUs / ends : 0;
        fmt::format_to(out, "  {:<20}{:>10}{:>10}{:>10}{:>10}{:>10}{:>13}\n",
                       fmt::format("{:>2} {}", task.task, task.name), task.starts, task.ends,
                       task.targetTimeUs, meanUs, task.longestRunUs, task.overTarget);
    }
}

void writeRegistrations(Output out, const DriverSnapshot& driver) {
    constexpr size_t kTaskInitPlace = 1;
    static_assert(VELK_COMMANDS[kTaskInitPlace].request == VELK_IOC_TASK_INIT);
    fmt::format_to(out, "\nRegistrations\n  {} accepted, {} refused, {} of these replayed\n",
                   driver.commands[kTaskInitPlace].accepted, driver.refusedRegistrations,
                   driver.replayedRegistrations);
    for (const TaskSnapshot& task : driver.tasks) {
        if (!task.isRegistered) {
            fmt::format_to(out, "  unique task {} {:?} was never accepted\n",
                           task.registration.uniqueTaskId, taskNameOf(task.registration));
        }
    }
}

void writeFailures(Output out, const std::vector<CallStatistics>& operations) {
    fmt::format_to(out, "\n{:<42}{:>10}{:>12}\n", "Calls that returned -1", "injected",
                   "unexpected");
    bool isNone = true;
    for (const CallStatistics& operation : operations) {
        if (operation.failed + operation.failedInjected == 0) {
            continue;
        }
        isNone = false;
        fmt::format_to(out, "  {:<40}{:>10}{:>12}", operation.name, operation.failedInjected,
                       operation.failed);
        if (operation.failed > 0) {
            fmt::format_to(out, "  first in line {}", operation.firstFailedLine);
        }
        fmt::format_to(out, "\n");
    }
    if (isNone) {
        fmt::format_to(out, "  none\n");
    }
}

// What the controls in force ask for, by the names of the record's fields.
std::string describeControl(const MergedControl& control) {
    std::vector<std::string> parts;
    if (control.uclampLevels != ControlLevels()) {
        const auto last =
                std::ranges::find_if(control.uclampLevels.rbegin(), control.uclampLevels.rend(),
                                     [](uint32_t level) { return level != 0; });
        parts.push_back(fmt::format("uclampLevels=[{}]",
                                    fmt::join(control.uclampLevels.begin(), last.base(), ",")));
    }
    if (control.percentLevel != 0) {
        parts.push_back(fmt::format("percentLevel={}", control.percentLevel));
    }
    if (control.requestValue) {
        parts.push_back(fmt::format("requestValue={}", *control.requestValue));
    }
    if (!control.taskUclamps.empty()) {
        parts.push_back(fmt::format("criticalTaskUclamps={}", control.taskUclamps));
    }
    if (control.limit != 0) {
        parts.push_back(fmt::format("limit={}", control.limit));
    }
    if (control.sharedFlag) {
        parts.emplace_back("sharedFlag");
    }
    return fmt::format("{}", fmt::join(parts, " "));
}

void writeActive(Output out, const Summary& summary) {
    fmt::format_to(out, "\nStill active at the end\n");
    const DriverSnapshot& driver = summary.driver;
    if (driver.isInitialised) {
        fmt::format_to(out, "  the library is up\n");
    }
    if (!driver.control.isEmpty()) {
        fmt::format_to(out, "  control: {}\n", describeControl(driver.control));
    }
    if (!driver.controlAtUninit.isEmpty()) {
        fmt::format_to(out, "  never reset before uninit: {}\n",
                       describeControl(driver.controlAtUninit));
    }
    if (driver.openDescriptors > 0) {
        fmt::format_to(out, "  {} open descriptor(s) of the control node\n",
                       driver.openDescriptors);
    }
    for (const ActiveRun& run : summary.activeRuns) {
        fmt::format_to(out, "  {} runs task {} {} since {:.3f} ms\n", run.thread, run.task,
                       run.name, milliseconds(run.sinceUs));
    }
    for (const ActiveSpan& span : summary.activeSpans) {
        fmt::format_to(out, "  {} is in a critical span of value {} since {:.3f} ms\n", span.thread,
                       span.criticalValue, milliseconds(span.sinceUs));
    }
    if (!driver.isInitialised && driver.control.isEmpty() && driver.controlAtUninit.isEmpty() &&
        driver.openDescriptors == 0 && summary.activeRuns.empty() && summary.activeSpans.empty()) {
        fmt::format_to(out, "  nothing\n");
    }
}

void writeFindings(Output out, const std::vector<FindingCount>& findings) {
    if (findings.empty()) {
        return;
    }
    fmt::format_to(out, "\nFindings of the driver\n");
    for (const FindingCount& finding : findings) {
        fmt::format_to(out, "  {:>8} x {}\n", finding.count, finding.finding);
    }
}

}  // namespace

std::string formatSummaryText(const Summary& summary) {
    std::string text;
    const auto out = std::back_inserter(text);
    writeHead(out, summary);
    writeCommands(out, summary.driver);
    writeTasks(out, summary.tasks);
    writeRegistrations(out, summary.driver);
    writeFailures(out, summary.operations);
    writeActive(out, summary);
    writeFindings(out, summary.driver.findings);
    return text;
}

}  // namespace desk
