#include "run/LiveSession.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace desk {

namespace {

using std::chrono::milliseconds;

// How long later calls are held back for one that has not ended.
constexpr milliseconds kPatience(50);
constexpr int64_t kNsPerUs = 1000;

}  // namespace

void LiveSession::take(std::string_view content) {
    LiveCall call = readCall(content);
    takeSections(call);
    if (mOrder.isEmpty()) {
        mKeptSince = Clock::now();
    }
    mOrder.add(std::move(call));
    while (std::optional<LiveCall> next = mOrder.next()) {
        tell(*next);
        mKeptSince = Clock::now();
    }
}

std::optional<milliseconds> LiveSession::advance() {
    if (mOrder.isEmpty()) {
        return std::nullopt;
    }
    const auto kept = std::chrono::duration_cast<milliseconds>(Clock::now() - mKeptSince);
    if (kept < kPatience) {
        return kPatience - kept;
    }
    finish();
    return std::nullopt;
}

void LiveSession::finish() {
    while (std::optional<LiveCall> next = mOrder.nextArrived()) {
        tell(*next);
    }
}

void LiveSession::wait() {
    for (CallListener* listener : mListeners) {
        listener->onWait();
    }
}

void LiveSession::tell(LiveCall& live) {
    std::vector<ReceivedCommand> commands;
    commands.reserve(live.commands.size());
    for (NumberedCommand& command : live.commands) {
        mDriver.take(command.received);
        commands.push_back(std::move(command.received));
    }
    if (live.line.empty()) {
        // The library closes the node as the process ends, and a program may close it by accident.
        const auto isSent = [](const ReceivedCommand& received) {
            return received.call == DriverCall::Command;
        };
        mForeignCommands += static_cast<uint64_t>(std::ranges::count_if(commands, isSent));
        return;
    }
    SessionCall call;
    std::string_view ignoredThread;
    if (const auto fault = mLineReader.read(live.line, call, ignoredThread)) {
        throw std::runtime_error("a call of the program's cannot be read: " + live.line);
    }
    call.line = ++mCalls;
    call.atUs = timeOf(live);
    call.thread = live.thread;

    PlayedCall played;
    played.call = &call;
    played.thread = live.threadName;
    played.result = live.result;
    played.startNs = call.atUs * kNsPerUs;  // so that a trace has the times of the summary
    played.endNs = live.endNs;
    played.commands = commands;
    played.sections = &live.sections;
    played.problem = live.problem;
    played.isFailureInjected =
            mJudge.isFailureInjected(call.info->name, commands) && played.result != 0;
    for (CallListener* listener : mListeners) {
        listener->onCall(played);
    }
}

// A thread may send sections of other threads too. Those of a call arrive with it or before it.
void LiveSession::takeSections(LiveCall& live) {
    for (const TraceEvent& section : live.sections) {
        mSections[section.tid].push_back(section);
    }
    if (live.line.empty()) {
        live.sections.clear();
    } else if (const auto own = mSections.find(live.tid); own != mSections.end()) {
        live.sections = std::move(own->second);
        mSections.erase(own);
    }
}

// The time at which the driver received the first command of the call, or at which a call without
// commands ended. Calls are ordered by it.
int64_t LiveSession::timeOf(const LiveCall& live) {
    const int64_t timeNs = live.commands.empty() ? live.endNs : live.commands.front().timeNs;
    mLastUs = std::max(mLastUs, timeNs / kNsPerUs);
    return mLastUs;
}

}  // namespace desk
