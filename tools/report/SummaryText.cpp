#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>

#include "driver/RecordCopy.h"
#include "report/CountText.h"
#include "report/Share.h"
#include "report/Summary.h"
#include "report/SummaryParts.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

using Output = TextOutput;

constexpr double kUsPerSecond = 1e6;

void writeProgramHead(Output out, const Summary& summary) {
    fmt::format_to(out, "Program {}\n", printableText(summary.session));
    fmt::format_to(out, "  {} on {}, {:.3f} s from the first to the last, {}\n",
                   countOf(summary.figures.calls, "call"),
                   countOf(summary.figures.threads, "thread"),
                   static_cast<double>(summary.figures.recordedUs) / kUsPerSecond, *summary.ending);
    if (summary.isStopped) {
        fmt::format_to(out, "  interrupted\n");
    }
}

void writeHead(Output out, const Summary& summary) {
    if (summary.ending) {
        writeProgramHead(out, summary);
        return;
    }
    fmt::format_to(out, "Session {}\n", printableText(summary.session));
    fmt::format_to(
            out, "  {} on {}, {:.3f} s recorded, played in {:.3f} s",
            countOf(summary.figures.calls, "call"), countOf(summary.figures.threads, "thread"),
            static_cast<double>(summary.figures.recordedUs) / kUsPerSecond, summary.playedSeconds);
    if (summary.playedSeconds > 0) {
        fmt::format_to(
                out, " ({:.0f} calls/s)",
                std::floor(static_cast<double>(summary.figures.calls) / summary.playedSeconds));
    }
    fmt::format_to(out, "\n");
    if (summary.error) {
        fmt::format_to(out, "  ended early: {}\n", printableText(*summary.error));
    } else if (summary.isStopped) {
        fmt::format_to(out, "  ended early: interrupted\n");
    } else if (summary.cutOff) {
        fmt::format_to(out, "  the recording was cut off at {}: all calls before are played\n",
                       printableText(*summary.cutOff));
    }
}

void writeCounters(Output out, const std::string& name, const CallCounters& counters) {
    if (counters.accepted + counters.refused + counters.refusedInjected > 0) {
        fmt::format_to(out, "  {:<20} {:>9} {:>9} {:>9} {:>9}\n", name, counters.accepted,
                       counters.noted, counters.refused, counters.refusedInjected);
    }
}

void writeCommands(Output out, const DriverSnapshot& driver) {
    fmt::format_to(out, "\n{:<22} {:>9} {:>9} {:>9} {:>9}\n", "Commands", "accepted", "noted",
                   "refused", "injected");
    writeCounters(out, "   open", driver.opens);
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        writeCounters(out, fmt::format("{} {}", VELK_COMMANDS[i].number, VELK_COMMANDS[i].name),
                      driver.commands[i]);
    }
    writeCounters(out, "   other requests", driver.otherRequests);
    writeCounters(out, "   close", driver.closes);
}

// The first names, and how many more there are.
std::string describeThreads(const std::vector<std::string>& names) {
    constexpr size_t kMost = 3;
    std::string text;
    for (size_t i = 0; i < std::min(names.size(), kMost); ++i) {
        text += (i > 0 ? ", " : "") + printableText(names[i]);
    }
    if (names.size() > kMost) {
        text += fmt::format(" and {} more", names.size() - kMost);
    }
    return text;
}

void writeTasks(Output out, const std::vector<TaskFigures>& tasks) {
    if (tasks.empty()) {
        return;
    }
    fmt::format_to(out,
                   "\n{:<16} {:>8} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12} {:>6} {:>10}  {}\n",
                   "Tasks", "starts", "ended", "target us", "p50 us", "p90 us", "p99 us", "max us",
                   "over target", "%", "busy ms", "threads");
    for (const TaskFigures& task : tasks) {
        const DistributionFigures& runs = task.runs;
        fmt::format_to(out,
                       "  {:<14} {:>8} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12} {:>6.1f} "
                       "{:>10.3f}  {}\n",
                       fmt::format("{:>2} {}", task.task, printableText(task.name)), task.starts,
                       runs.count, task.targetTimeUs, textOf(runs, runs.p50Us),
                       textOf(runs, runs.p90Us), textOf(runs, runs.p99Us),
                       textOf(runs, runs.longestUs), task.overTarget,
                       percentOf(task.overTarget, runs.count), milliseconds(runs.totalUs),
                       describeThreads(task.threads));
    }
}

void writeAnchorRow(Output out, const std::string& name, int32_t targetUs,
                    const DistributionFigures& times, uint64_t overTarget) {
    fmt::format_to(out, "  {:<14} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12} {:>6.1f}\n", name,
                   times.count, targetUs, textOf(times, times.p50Us), textOf(times, times.p90Us),
                   textOf(times, times.p99Us), textOf(times, times.longestUs), overTarget,
                   percentOf(overTarget, times.count));
}

void writeAnchors(Output out, const std::vector<AnchorFigures>& anchors) {
    if (anchors.empty()) {
        return;
    }
    fmt::format_to(out, "\n{:<16} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12} {:>6}\n", "Anchors",
                   "passes", "target us", "p50 us", "p90 us", "p99 us", "max us", "over target",
                   "%");
    for (const AnchorFigures& anchor : anchors) {
        writeAnchorRow(out, fmt::format("{:>2} latency", anchor.anchor), anchor.latencyTargetUs,
                       anchor.latency, anchor.overLatencyTarget);
        writeAnchorRow(out, "   jitter", anchor.jitterTargetUs, anchor.jitter,
                       anchor.overJitterTarget);
        fmt::format_to(out,
                       "     unmatched: {} starts, {} ends, {} open at the end; out of order: {} "
                       "starts, {} ends\n",
                       anchor.unmatchedStarts, anchor.unmatchedEnds, anchor.openAtEnd,
                       anchor.outOfOrderStarts, anchor.outOfOrderEnds);
    }
}

void writeSpans(Output out, const SessionFigures& figures) {
    const SpanFigures& spans = figures.spans;
    if (spans.spans.count == 0 && figures.activeSpans.empty()) {
        return;
    }
    fmt::format_to(out,
                   "\nCritical spans\n  {} ended, {:.3f} ms in all, {:.3f} ms the longest, {} open "
                   "at the end\n",
                   spans.spans.count, milliseconds(spans.spans.totalUs),
                   milliseconds(spans.spans.longestUs), figures.activeSpans.size());
}

void writeRegistrations(Output out, const DriverSnapshot& driver) {
    fmt::format_to(out, "\nRegistrations\n  {} registered, {} of them after a refusal; {}\n",
                   countOf(driver.commands[kTaskInitPlace].accepted, "task"),
                   driver.replayedRegistrations, countOf(driver.refusedRegistrations, "refusal"));
    for (const TaskSnapshot& task : driver.tasks) {
        if (!task.isRegistered) {
            fmt::format_to(out, "  unique task {} {:?} was never accepted\n",
                           task.registration.uniqueTaskId, taskNameOf(task.registration));
        }
    }
}

void writeFailures(Output out, const Summary& summary) {
    fmt::format_to(out, "\n{:<42} {:>9} {:>11}\n", "Calls that returned -1", "injected",
                   "unexpected");
    bool isNone = true;
    for (const OperationFigures& operation : summary.figures.operations) {
        if (operation.failed + operation.failedInjected == 0) {
            continue;
        }
        isNone = false;
        fmt::format_to(out, "  {:<40} {:>9} {:>11}", operation.name, operation.failedInjected,
                       operation.failed);
        if (operation.failed > 0) {
            fmt::format_to(out, "  first in {} {}", summary.unit(), operation.firstFailedLine);
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
    if (hasLevel(control.uclampLevels)) {
        parts.push_back(fmt::format("uclampLevels={}", describeLevels(control.uclampLevels)));
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
    const ControlFigures& controls = summary.figures.controls;
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
    writeUnreset(out, controls.active, summary.unit());
    writeUnreset(out, controls.atUninit, summary.unit());
    if (driver.openDescriptors > 0) {
        fmt::format_to(out, "  {} of the control node\n",
                       countOf(driver.openDescriptors, "open descriptor"));
    }
    writeFirst(out, summary.figures.activeRuns, 0, "run", [out](const ActiveRun& run) {
        fmt::format_to(out, "  {} runs task {} {} since {:.3f} ms\n", printableText(run.thread),
                       run.task, printableText(run.name), milliseconds(run.sinceUs));
    });
    writeFirst(out, summary.figures.activeSpans, 0, "critical span", [out](const ActiveSpan& span) {
        fmt::format_to(out, "  {} is in a critical span of value {} since {:.3f} ms\n",
                       printableText(span.thread), span.criticalValue, milliseconds(span.sinceUs));
    });
    if (!driver.isInitialised && driver.control.isEmpty() && driver.controlAtUninit.isEmpty() &&
        controls.active.controls.empty() && controls.atUninit.controls.empty() &&
        driver.openDescriptors == 0 && summary.figures.activeRuns.empty() &&
        summary.figures.activeSpans.empty()) {
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
    writeTasks(out, summary.figures.tasks);
    writeAnchors(out, summary.figures.anchors);
    writeSpans(out, summary.figures);
    writeFrames(out, summary.figures.frames);
    writeBoosts(out, summary.figures, summary.unit());
    writeRegistrations(out, summary.driver);
    writeFailures(out, summary);
    writeActive(out, summary);
    writeFindings(out, summary.driver.findings);
    return text;
}

}  // namespace desk
