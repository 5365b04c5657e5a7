#include "report/CommandPrinter.h"

#include <fmt/format.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "driver/RecordDecoder.h"
#include "report/RecordJson.h"

namespace desk {

namespace {

using nlohmann::ordered_json;

constexpr double kUsPerMs = 1e3;
constexpr const char* kRowFormat = "{:>12.3f}  {:<12}  {:<13}  {:<11}  {}";

double timeMs(const PlayedCall& played) {
    return static_cast<double>(played.call->atUs) / kUsPerMs;
}

const char* nameOf(const ReceivedCommand& command) {
    switch (command.call) {
        case DriverCall::Open:
            return "open";
        case DriverCall::Close:
            return "close";
        case DriverCall::Command:
            break;
    }
    return command.command != nullptr ? command.command->name : "unknown";
}

const char* errorName(int error) {
    const char* name = strerrorname_np(error);
    return name != nullptr ? name : "unknown errno";
}

std::string describeFields(const ReceivedCommand& command) {
    if (command.command == nullptr) {
        return command.call == DriverCall::Command ? fmt::format("request={:#x}", command.request)
                                                   : std::string();
    }
    return describeRecord(*command.command, command.record.data());
}

ordered_json beginJson(const PlayedCall& played) {
    return {{"at_us", played.call->atUs},
            {"line", played.call->line},
            {"thread", std::string(played.thread)},
            {"call", played.call->info->name}};
}

}  // namespace

CommandPrinter::CommandPrinter(std::shared_ptr<LineSink> output, PrintFormat format,
                               std::function<void()> beforeRows)
    : mOutput(std::move(output)), mFormat(format), mBeforeRows(std::move(beforeRows)) {
    if (mFormat == PrintFormat::Table) {
        mOutput->writeLine(fmt::format("{:>12}  {:<12}  {:<13}  {:<11}  {}", "time ms", "thread",
                                       "command", "verdict", "fields"));
    }
}

void CommandPrinter::onCall(const PlayedCall& played) {
    if (mOutput->error() != 0) {
        return;  // nobody reads it any more
    }
    mBeforeRows();
    for (const ReceivedCommand& command : played.commands) {
        if (mFormat == PrintFormat::Table) {
            printTableRow(played, command);
        } else {
            printJsonCommand(played, command);
        }
    }
    if (played.result != 0) {
        if (mFormat == PrintFormat::Table) {
            printTableFailure(played);
        } else {
            printJsonFailure(played);
        }
    }
}

void CommandPrinter::onWait() {
    mOutput->flush();
}

void CommandPrinter::printTableRow(const PlayedCall& played, const ReceivedCommand& command) {
    const char* verdict = isRefusal(command.verdict)          ? "refused"
                          : command.verdict == Verdict::Noted ? "noted"
                                                              : "accepted";
    std::string row = fmt::format(kRowFormat, timeMs(played), played.thread, nameOf(command),
                                  verdict, describeFields(command));
    if (isRefusal(command.verdict)) {
        row += fmt::format("  <- {}{}", errorName(command.error),
                           command.verdict == Verdict::InjectedRefusal ? ", injected" : "");
    }
    if (!command.finding.empty()) {
        row += fmt::format("  <- {}", command.finding);
    }
    row.erase(row.find_last_not_of(' ') + 1);
    mOutput->writeLine(row);
}

void CommandPrinter::printTableFailure(const PlayedCall& played) {
    const std::string what =
            fmt::format("{} in line {}{}", played.call->info->name, played.call->line,
                        played.isFailureInjected ? ", injected" : "");
    mOutput->writeLine(
            fmt::format(kRowFormat, timeMs(played), played.thread, "-", "returned -1", what));
}

void CommandPrinter::printJsonCommand(const PlayedCall& played, const ReceivedCommand& command) {
    ordered_json row = beginJson(played);
    row["command"] = nameOf(command);
    if (command.command != nullptr) {
        row["number"] = command.command->number;
        row["fields"] = recordToJson(*command.command, command.record.data());
    } else if (command.call == DriverCall::Command) {
        row["request"] = command.request;
    }
    row["accepted"] = !isRefusal(command.verdict);
    if (isRefusal(command.verdict)) {
        row["errno"] = errorName(command.error);
        row["injected"] = command.verdict == Verdict::InjectedRefusal;
    }
    if (!command.finding.empty()) {
        row["finding"] = command.finding;
    }
    printJson(row);
}

void CommandPrinter::printJsonFailure(const PlayedCall& played) {
    ordered_json row = beginJson(played);
    row["returned"] = played.result;
    row["injected"] = played.isFailureInjected;
    printJson(row);
}

void CommandPrinter::printJson(const ordered_json& row) {
    mOutput->writeLine(row.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
}

}  // namespace desk
