#include "tune/DriverView.h"

#include <fmt/format.h>

#include "driver/DriverModel.h"
#include "driver/RecordCopy.h"
#include "report/RecordJson.h"
#include "report/Summary.h"
#include "session/SessionLine.h"

namespace desk {

using nlohmann::ordered_json;

namespace {

// A control that the caller supplied is named by its category; its values are the caller's.
std::string senderOf(const SessionCall& call) {
    if (call.info->name == kInitCall) {
        return "default control of init";
    }
    return call.arguments.control != nullptr
                   ? fmt::format("{}(control of category {})", call.info->name,
                                 call.arguments.control->category)
                   : describeCall(call.info->name, call.arguments);
}

}  // namespace

void DriverView::onCall(const PlayedCall& played) {
    mAnalysis.onCall(played);
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr && !isRefusal(command.verdict)) {
            takeCommand(played, command);
        }
    }
}

void DriverView::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    ordered_json record = recordToJson(*command.command, command.record.data());
    record.erase("tid");
    switch (command.request) {
        case VELK_IOC_INIT:
            add("init command", record, played);
            break;
        case VELK_IOC_TASK_INIT: {
            const auto task = copyRecord<VELK_TASK_INIT_PARAM>(command.record.data());
            mTaskNames[task.uniqueTaskId] = taskNameOf(task);
            record.erase("uniqueTaskId");
            add(fmt::format("task {}", played.call->arguments.task.value_or(0)), record, played);
            break;
        }
        case VELK_IOC_SINGLE_SHOT:
            nameTasks(record);
            add(senderOf(*played.call), record, played);
            break;
        case VELK_IOC_CRITICAL_START:
            add(fmt::format("critical span of task {}", played.call->arguments.task.value_or(0)),
                record, played);
            break;
        case VELK_IOC_ANCHOR:
            if (record["phase"] == VELK_ANCHOR_START) {
                record.erase("phase");
                record.erase("serial");
                add(fmt::format("anchor {}", record["anchor"].get<int>()), record, played);
            }
            break;
        default:
            break;
    }
}

void DriverView::nameTasks(ordered_json& control) const {
    ordered_json tasks = ordered_json::array();
    for (size_t i = 0; i < control["criticalTaskIds"].size(); ++i) {
        const auto id = control["criticalTaskIds"][i].get<uint32_t>();
        if (const auto name = mTaskNames.find(id); name != mTaskNames.end()) {
            tasks.push_back({name->second, control["criticalTaskUclamps"][i]});
        }
    }
    control.erase("criticalTaskIds");
    control.erase("criticalTaskUclamps");
    control["criticalTasks"] = tasks;
}

void DriverView::add(const std::string& subject, const ordered_json& record,
                     const PlayedCall& played) {
    Sent& sent = mRecords[subject][record.dump()];
    sent.line = sent.count++ == 0 ? played.call->line : sent.line;
}

ordered_json DriverView::result() const {
    ordered_json records = ordered_json::object();
    for (const auto& [subject, texts] : mRecords) {
        for (const auto& [text, sent] : texts) {
            records[subject].push_back({{"line", sent.line},
                                        {"count", sent.count},
                                        {"record", ordered_json::parse(text)}});
        }
    }
    const Summary summary =
            summarize("", mAnalysis.figures(), controlNode().snapshot(), PlayResult(), 0);
    return {{"summary", ordered_json::parse(formatSummaryJson(summary)).at("summary")},
            {"records", records},
            {"unexpected", summary.unexpected()}};
}

}  // namespace desk
