#include "report/page/PageRecorder.h"

#include "report/RecordJson.h"

namespace desk {

namespace {

constexpr size_t kMostRows = 100;
constexpr uint64_t kMostEvents = 500;  // of each kind

}  // namespace

void PageRecorder::onCall(const PlayedCall& played) {
    mThreads.take(played);
    if (!mHasBegun) {
        mHasBegun = true;
        mFirstUs = played.call->atUs;
    }
    for (const ReceivedCommand& command : played.commands) {
        if (command.control) {
            mLevels.add({played.call->atUs - mFirstUs, command.control->percentLevel,
                         command.control->uclampLevels});
        }
        if (command.verdict == Verdict::InjectedRefusal) {
            addEvent(EventKind::Refusal, played, commandName(command), errorName(command.error));
        } else if (!command.finding.empty()) {
            addEvent(EventKind::Finding, played, commandName(command), command.finding);
        }
    }
    if (played.result != 0) {
        addEvent(EventKind::Failure, played, played.call->info->name, played.problem);
    }
}

void PageRecorder::onRun(const EndedRun& run) {
    add({RowKind::Task, run.thread, run.task}, run.name,
        intervalOf(run.sinceUs, run.untilUs, run.targetUs));
}

void PageRecorder::onPass(const EndedPass& pass) {
    add({RowKind::Anchor, 0, pass.anchor}, "",
        intervalOf(pass.sinceUs, pass.untilUs, pass.targetUs));
}

void PageRecorder::onSpan(const EndedSpan& span) {
    add({RowKind::Span, span.thread, 0}, "", intervalOf(span.sinceUs, span.untilUs, 0));
}

PageInterval PageRecorder::intervalOf(int64_t sinceUs, int64_t untilUs, int32_t targetUs) const {
    return {sinceUs - mFirstUs, untilUs - sinceUs, targetUs};
}

void PageRecorder::add(const RowKey& key, std::string_view name, const PageInterval& interval) {
    auto known = mRowsByKey.find(key);
    if (known == mRowsByKey.end()) {
        if (mRows.size() == kMostRows) {
            ++mWithoutRow;
            return;
        }
        PageRow& row = mRows.emplace_back();
        const auto& [kind, thread, number] = key;
        row.kind = kind;
        row.thread = kind == RowKind::Anchor ? "" : mThreads.nameOf(thread);
        row.number = number;
        known = mRowsByKey.emplace(key, &row).first;
    }
    PageRow& row = *known->second;
    if (row.name != name) {
        row.name = name;
    }
    row.intervals.add(interval);
}

void PageRecorder::addEvent(EventKind kind, const PlayedCall& played, std::string_view what,
                            std::string_view text) {
    if (++mEventCounts[static_cast<size_t>(kind)] > kMostEvents) {
        return;
    }
    mEvents.push_back({kind, played.call->atUs - mFirstUs, played.call->line,
                       std::string(played.thread), std::string(what), std::string(text)});
}

}  // namespace desk
