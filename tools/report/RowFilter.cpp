#include "report/RowFilter.h"

#include <android-base/strings.h>
#include <fmt/format.h>

#include <stdexcept>

#include "driver/RecordCopy.h"
#include "report/RecordJson.h"

namespace desk {

namespace {

constexpr const char* kOpen = "open";
constexpr const char* kClose = "close";

[[noreturn]] void fail(std::string_view item, std::string_view expected) {
    throw std::invalid_argument(fmt::format("filter item \"{}\": expected {}", item, expected));
}

// The command's name, for a number too.
std::string parseCommand(std::string_view item, const std::string& text) {
    std::string names = fmt::format("{}, {}", kOpen, kClose);
    for (const VELKCommand& command : VELK_COMMANDS) {
        if (text == command.name || text == std::to_string(command.number)) {
            return command.name;
        }
        names += fmt::format(", {}", command.name);
    }
    if (text == kOpen || text == kClose) {
        return text;
    }
    fail(item, fmt::format("a number from {} to {} or one of {}", VELK_COMMANDS.front().number,
                           VELK_COMMANDS.back().number, names));
}

bool allows(const std::set<std::string, std::less<>>& names, std::string_view name) {
    return names.empty() || names.contains(name);
}

}  // namespace

RowFilter RowFilter::parse(std::string_view text) {
    RowFilter filter;
    for (const std::string& item : android::base::Split(std::string(text), ",")) {
        filter.addItem(android::base::Trim(item));
    }
    return filter;
}

void RowFilter::addItem(std::string_view item) {
    const size_t place = item.find('=');
    const std::string_view kind = item.substr(0, place);
    const std::string value(place == std::string_view::npos ? "" : item.substr(place + 1));
    if (item == "failures") {
        mIsOfFailures = true;
    } else if (kind == "command" && !value.empty()) {
        mCommands.insert(parseCommand(item, value));
    } else if (kind == "thread" && !value.empty()) {
        mThreads.insert(value);
    } else if (kind == "task" && !value.empty()) {
        mTasks.insert(value);
    } else {
        fail(item, "command=NAME, thread=NAME, task=TASK or failures");
    }
}

void RowFilter::onCall(const PlayedCall& played) {
    if (mTasks.empty() || !played.call->arguments.task) {
        return;
    }
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr && command.request == VELK_IOC_TASK_INIT) {
            mTaskNames[*played.call->arguments.task] =
                    taskNameOf(copyRecord<VELK_TASK_INIT_PARAM>(command.record.data()));
        }
    }
}

bool RowFilter::hasCall(const PlayedCall& played) const {
    if (!allows(mThreads, played.thread)) {
        return false;
    }
    if (mTasks.empty()) {
        return true;
    }
    if (!played.call->arguments.task) {
        return false;
    }
    const int32_t task = *played.call->arguments.task;
    const auto name = mTaskNames.find(task);
    return mTasks.contains(std::to_string(task)) ||
           (name != mTaskNames.end() && mTasks.contains(name->second));
}

bool RowFilter::hasCommand(const PlayedCall& played, const ReceivedCommand& command) const {
    return (!mIsOfFailures || isRefusal(command.verdict)) &&
           allows(mCommands, commandName(command)) && hasCall(played);
}

bool RowFilter::hasFailure(const PlayedCall& played) const {
    return mCommands.empty() && hasCall(played);
}

}  // namespace desk
