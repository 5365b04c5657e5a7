#include <nlohmann/json.hpp>

#include "driver/RecordCopy.h"
#include "report/Share.h"
#include "report/Summary.h"
#include "report/SummaryParts.h"

namespace desk {

namespace {

using nlohmann::ordered_json;

ordered_json countersToJson(const CallCounters& counters) {
    return {{"accepted", counters.accepted},
            {"noted", counters.noted},
            {"refused", counters.refused},
            {"refusedInjected", counters.refusedInjected}};
}

ordered_json commandsToJson(const DriverSnapshot& driver) {
    ordered_json commands = ordered_json::object();
    commands["open"] = countersToJson(driver.opens);
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        commands[VELK_COMMANDS[i].name] = countersToJson(driver.commands[i]);
    }
    commands["otherRequests"] = countersToJson(driver.otherRequests);
    commands["close"] = countersToJson(driver.closes);
    return commands;
}

ordered_json tasksToJson(const std::vector<TaskFigures>& tasks) {
    ordered_json list = ordered_json::array();
    for (const TaskFigures& task : tasks) {
        list.push_back({{"task", task.task},
                        {"name", task.name},
                        {"starts", task.starts},
                        {"repeatedStarts", task.repeatedStarts},
                        {"ends", task.runs.count},
                        {"targetTimeUs", task.targetTimeUs},
                        {"totalRunUs", task.runs.totalUs},
                        {"p50RunUs", jsonOf(task.runs, task.runs.p50Us)},
                        {"p90RunUs", jsonOf(task.runs, task.runs.p90Us)},
                        {"p99RunUs", jsonOf(task.runs, task.runs.p99Us)},
                        {"longestRunUs", task.runs.longestUs},
                        {"overTarget", task.overTarget},
                        {"overTargetPercent", percentOf(task.overTarget, task.runs.count)},
                        {"threads", task.threads}});
    }
    return list;
}

ordered_json anchorsToJson(const std::vector<AnchorFigures>& anchors) {
    ordered_json list = ordered_json::array();
    for (const AnchorFigures& anchor : anchors) {
        const DistributionFigures& latency = anchor.latency;
        const DistributionFigures& jitter = anchor.jitter;
        list.push_back({{"anchor", anchor.anchor},
                        {"starts", anchor.starts},
                        {"ends", anchor.ends},
                        {"passes", latency.count},
                        {"latencyTargetUs", anchor.latencyTargetUs},
                        {"p50LatencyUs", jsonOf(latency, latency.p50Us)},
                        {"p90LatencyUs", jsonOf(latency, latency.p90Us)},
                        {"p99LatencyUs", jsonOf(latency, latency.p99Us)},
                        {"longestLatencyUs", latency.longestUs},
                        {"overLatencyTarget", anchor.overLatencyTarget},
                        {"jitterTargetUs", anchor.jitterTargetUs},
                        {"latencyChanges", jitter.count},
                        {"p50JitterUs", jsonOf(jitter, jitter.p50Us)},
                        {"p90JitterUs", jsonOf(jitter, jitter.p90Us)},
                        {"p99JitterUs", jsonOf(jitter, jitter.p99Us)},
                        {"largestJitterUs", jitter.longestUs},
                        {"overJitterTarget", anchor.overJitterTarget},
                        {"unmatchedStarts", anchor.unmatchedStarts},
                        {"unmatchedEnds", anchor.unmatchedEnds},
                        {"openAtEnd", anchor.openAtEnd},
                        {"outOfOrderStarts", anchor.outOfOrderStarts},
                        {"outOfOrderEnds", anchor.outOfOrderEnds}});
    }
    return list;
}

ordered_json spansToJson(const SpanFigures& spans, size_t open) {
    return {{"count", spans.spans.count},
            {"nestedStarts", spans.nestedStarts},
            {"totalUs", spans.spans.totalUs},
            {"longestUs", spans.spans.longestUs},
            {"openAtEnd", open}};
}

ordered_json neverAcceptedToJson(const DriverSnapshot& driver) {
    ordered_json list = ordered_json::array();
    for (const TaskSnapshot& task : driver.tasks) {
        if (!task.isRegistered) {
            list.push_back({{"uniqueTaskId", task.registration.uniqueTaskId},
                            {"name", taskNameOf(task.registration)}});
        }
    }
    return list;
}

ordered_json registrationsToJson(const DriverSnapshot& driver) {
    return {{"accepted", driver.commands[kTaskInitPlace].accepted},
            {"refused", driver.refusedRegistrations},
            {"replayed", driver.replayedRegistrations},
            {"neverAccepted", neverAcceptedToJson(driver)}};
}

ordered_json operationsToJson(const std::vector<OperationFigures>& operations) {
    ordered_json calls = ordered_json::object();
    for (const OperationFigures& operation : operations) {
        ordered_json& call = calls[operation.name];
        call = {{"calls", operation.calls},
                {"failedInjected", operation.failedInjected},
                {"failed", operation.failed}};
        if (operation.failed > 0) {
            call["firstFailedLine"] = operation.firstFailedLine;
        }
    }
    return calls;
}

ordered_json controlToJson(const MergedControl& control) {
    ordered_json fields = {{"uclampLevels", control.uclampLevels},
                           {"percentLevel", control.percentLevel}};
    if (control.requestValue) {
        fields["requestValue"] = *control.requestValue;
    }
    fields["criticalTasks"] = ordered_json::array();
    for (const auto& [id, uclamp] : control.taskUclamps) {
        fields["criticalTasks"].push_back({{"uniqueTaskId", id}, {"uclamp", uclamp}});
    }
    fields["limit"] = control.limit;
    fields["sharedFlag"] = control.sharedFlag;
    return fields;
}

ordered_json activeToJson(const Summary& summary) {
    ordered_json active = {{"initialised", summary.driver.isInitialised},
                           {"openDescriptors", summary.driver.openDescriptors}};
    active["runs"] = ordered_json::array();
    for (const ActiveRun& run : summary.figures.activeRuns) {
        active["runs"].push_back({{"thread", run.thread},
                                  {"task", run.task},
                                  {"name", run.name},
                                  {"sinceUs", run.sinceUs}});
    }
    active["spans"] = ordered_json::array();
    for (const ActiveSpan& span : summary.figures.activeSpans) {
        active["spans"].push_back({{"thread", span.thread},
                                   {"criticalValue", span.criticalValue},
                                   {"sinceUs", span.sinceUs}});
    }
    if (!summary.driver.control.isEmpty()) {
        active["control"] = controlToJson(summary.driver.control);
    }
    if (!summary.driver.controlAtUninit.isEmpty()) {
        active["controlAtUninit"] = controlToJson(summary.driver.controlAtUninit);
    }
    active["unresetControls"] = unresetToJson(summary.figures.controls.active);
    active["unresetControlsAtUninit"] = unresetToJson(summary.figures.controls.atUninit);
    return active;
}

ordered_json findingsToJson(const std::vector<FindingCount>& findings) {
    ordered_json list = ordered_json::object();
    for (const FindingCount& finding : findings) {
        list[finding.finding] = finding.count;
    }
    return list;
}

}  // namespace

std::string formatSummaryJson(const Summary& summary) {
    const DriverSnapshot& driver = summary.driver;
    const SessionFigures& figures = summary.figures;
    ordered_json body = {{summary.ending ? "program" : "session", summary.session},
                         {"calls", figures.calls},
                         {"threads", figures.threads},
                         {"recordedUs", figures.recordedUs},
                         {"interrupted", summary.isStopped}};
    if (summary.ending) {
        body["ending"] = *summary.ending;
    } else {
        body["playedSeconds"] = summary.playedSeconds;
    }
    if (summary.error) {
        body["error"] = *summary.error;
    }
    if (summary.cutOff) {
        body["cutOff"] = *summary.cutOff;
    }
    body["commands"] = commandsToJson(driver);
    body["tasks"] = tasksToJson(figures.tasks);
    body["anchors"] = anchorsToJson(figures.anchors);
    body["criticalSpans"] = spansToJson(figures.spans, figures.activeSpans.size());
    body["frames"] = framesToJson(figures.frames);
    body["boosts"] = boostsToJson(figures);
    body["registrations"] = registrationsToJson(driver);
    body["operations"] = operationsToJson(figures.operations);
    body["active"] = activeToJson(summary);
    body["findings"] = findingsToJson(driver.findings);
    return ordered_json{{"summary", body}}.dump(-1, ' ', false,
                                                ordered_json::error_handler_t::replace);
}

}  // namespace desk
