#include "report/CommandPrinter.h"

#include <fmt/format.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "common/Terminal.h"
#include "driver/RecordDecoder.h"
#include "report/RecordJson.h"
#include "session/SessionLine.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

using nlohmann::ordered_json;

constexpr double kUsPerMs = 1e3;
constexpr const char* kHeadFormat = "{:>12.3f}  {:<12}  {:<13}  {:<11}  ";

double timeMs(const PlayedCall& played) {
    return static_cast<double>(played.call->atUs) / kUsPerMs;
}

std::string describeFields(const PlayedCall& played, const ReceivedCommand& command) {
    if (command.command == nullptr) {
        return command.call == DriverCall::Command ? fmt::format("request={:#x}", command.request)
                                                   : std::string();
    }
    return describeRecord(*command.command, recordToPrint(played, command).data());
}

std::string describeOutcome(const ReceivedCommand& command) {
    std::string text;
    if (isRefusal(command.verdict)) {
        text = fmt::format("  <- {}{}", errorName(command.error),
                           command.verdict == Verdict::InjectedRefusal ? ", injected" : "");
    }
    return command.finding.empty() ? text : text + fmt::format("  <- {}", command.finding);
}

// The library's message without the source location at its end.
std::string_view messageOf(const PlayedCall& played) {
    return played.problem.substr(0, played.problem.rfind("{#"));
}

ordered_json beginJson(const PlayedCall& played) {
    return {{"at_us", played.call->atUs},
            {"line", played.call->line},
            {"thread", std::string(played.thread)},
            {"call", played.call->info->name}};
}

}  // namespace

CommandPrinter::CommandPrinter(std::shared_ptr<LineSink> output, Place place, PrintFormat format,
                               RowFilter filter, std::function<void()> beforeRows)
    : mOutput(std::move(output)),
      mPlace(place),
      mFormat(format),
      mFilter(std::move(filter)),
      mBeforeRows(std::move(beforeRows)),
      mIsTerminal(terminalColumns(place.terminal).has_value()) {
    if (mFormat == PrintFormat::Table) {
        mColumns = terminalColumns(mPlace.terminal);
        printRow(fmt::format("{:>12}  {:<12}  {:<13}  {:<11}  ", "time ms", "thread", "command",
                             "verdict"),
                 "fields", "");
    }
}

void CommandPrinter::onCall(const PlayedCall& played) {
    if (mOutput->error() != 0) {
        return;  // the reader has closed the pipe
    }
    if (mIsTerminal) {
        mColumns = terminalColumns(mPlace.terminal);
    }
    mBeforeRows();
    mFilter.onCall(played);
    const bool isTable = mFormat == PrintFormat::Table;
    for (const ReceivedCommand& command : played.commands) {
        if (mFilter.hasCommand(played, command)) {
            isTable ? printTableRow(played, command) : printJsonCommand(played, command);
        }
    }
    if (played.result != 0 && mFilter.hasFailure(played)) {
        isTable ? printTableFailure(played) : printJsonFailure(played);
    }
}

void CommandPrinter::onWait() {
    mOutput->flush();
}

void CommandPrinter::printRow(std::string head, std::string_view fields,
                              const std::string& outcome) {
    std::string row;
    if (mColumns) {
        const size_t taken = displayWidth(head) + displayWidth(outcome);
        const size_t left = *mColumns > taken ? *mColumns - taken : 0;
        row = cutToWidth(std::move(head) + cutToWidth(fields, left) + outcome, *mColumns);
    } else {
        row = std::move(head).append(fields).append(outcome);
    }
    row.erase(row.find_last_not_of(' ') + 1);
    mOutput->writeLine(row);
}

void CommandPrinter::printTableRow(const PlayedCall& played, const ReceivedCommand& command) {
    const char* verdict = isRefusal(command.verdict)          ? "refused"
                          : command.verdict == Verdict::Noted ? "noted"
                                                              : "accepted";
    printRow(fmt::format(kHeadFormat, timeMs(played), printableText(played.thread),
                         commandName(command), verdict),
             describeFields(played, command), describeOutcome(command));
}

void CommandPrinter::printTableFailure(const PlayedCall& played) {
    const std::string call = describeCall(played.call->info->name, played.call->arguments);
    std::string outcome = fmt::format("  <- {} {}{}", mPlace.unit, played.call->line,
                                      played.isFailureInjected ? ", injected" : "");
    if (!played.problem.empty()) {
        outcome += fmt::format("  <- {}", printableText(messageOf(played)));
    }
    printRow(fmt::format(kHeadFormat, timeMs(played), printableText(played.thread), "-",
                         "returned -1"),
             call, outcome);
}

void CommandPrinter::printJsonCommand(const PlayedCall& played, const ReceivedCommand& command) {
    ordered_json row = beginJson(played);
    row["command"] = commandName(command);
    if (command.command != nullptr) {
        row["number"] = command.command->number;
        row["fields"] = recordToJson(*command.command, recordToPrint(played, command).data());
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
    row["arguments"] = argumentsToJson(played);
    if (!played.problem.empty()) {
        row["message"] = messageOf(played);
    }
    printJson(row);
}

void CommandPrinter::printJson(const ordered_json& row) {
    mOutput->writeLine(row.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
}

}  // namespace desk
