#include "report/TraceSpans.h"

#include <algorithm>
#include <utility>

#include "driver/RecordCopy.h"
#include "report/TraceText.h"

namespace desk {

namespace {

// The most open passes of one anchor that are kept.
constexpr size_t kMostOpen = 1024;

}  // namespace

TraceSpans::TraceSpans(std::function<void(const std::string&)> write) : mWrite(std::move(write)) {}

void TraceSpans::onCall(const PlayedCall& played) {
    for (const ReceivedCommand& command : played.commands) {
        if (command.command == nullptr || isRefusal(command.verdict)) {
            continue;
        }
        const void* record = command.record.data();
        switch (command.request) {
            case VELK_IOC_INIT:
            case VELK_IOC_UNINIT:
                endAll(played.startNs);
                break;
            case VELK_IOC_ANCHOR:
                takeAnchor(played, copyRecord<VELK_ANCHOR_PARAM>(record));
                break;
            case VELK_IOC_CRITICAL_START:
            case VELK_IOC_CRITICAL_END:
                takeSpan(played, copyRecord<VELK_CRITICAL_TASK_PARAM>(record),
                         command.request == VELK_IOC_CRITICAL_START);
                break;
            default:
                break;
        }
    }
}

void TraceSpans::endAll(int64_t timeNs) {
    for (const auto& [anchor, passes] : mPasses) {
        for (const Slice& pass : passes) {
            end(pass, timeNs, false);
        }
    }
    for (const auto& [tid, span] : mSpans) {
        end(span, timeNs, false);
    }
    for (const auto& [key, run] : mRuns) {
        end(run, timeNs, false);
    }
    mPasses.clear();
    mSpans.clear();
    mRuns.clear();
}

void TraceSpans::beginRun(const PlayedCall& played, uint32_t uniqueTaskId, std::string_view task,
                          const std::string& arguments) {
    const uint32_t thread = played.call->thread;
    const auto [run, isNew] = mRuns.try_emplace({thread, uniqueTaskId});
    if (isNew) {
        run->second = {"task",
                       fmt::format("run of {} by {}", uniqueTaskId, traceThread(thread)),
                       fmt::format("{} by {}", task, played.thread),
                       thread,
                       0,
                       played.startNs};
        begin(run->second, arguments);
    }
}

bool TraceSpans::endRun(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs) {
    const auto run = mRuns.find({thread, uniqueTaskId});
    if (run == mRuns.end()) {
        return false;
    }
    end(run->second, timeNs, true);
    mRuns.erase(run);
    return true;
}

void TraceSpans::takeAnchor(const PlayedCall& played, const VELK_ANCHOR_PARAM& record) {
    std::deque<Slice>& passes = mPasses[record.anchor];
    const auto pass = std::ranges::find(passes, record.serial, &Slice::serial);
    const bool isStart = record.phase == VELK_ANCHOR_START;
    if (pass != passes.end()) {
        end(*pass, played.startNs, !isStart);
        passes.erase(pass);
    }
    if (!isStart) {
        return;
    }
    if (passes.size() == kMostOpen) {
        end(passes.front(), played.startNs, false);
        passes.pop_front();
    }
    passes.push_back({"anchor", fmt::format("anchor {} serial {}", record.anchor, record.serial),
                      fmt::format("anchor {}", record.anchor), played.call->thread, record.serial,
                      played.startNs});
    begin(passes.back(), dumpForTrace({{"serial", record.serial},
                                       {"latencyTarget", record.latencyTarget},
                                       {"jitterTarget", record.jitterTarget}}));
}

void TraceSpans::takeSpan(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record,
                          bool isStart) {
    const auto open = mSpans.find(record.tid);
    if (!isStart && open != mSpans.end()) {
        end(open->second, played.startNs, true);
        mSpans.erase(open);
    } else if (isStart && open == mSpans.end()) {
        const Slice span = {"critical span",
                            fmt::format("critical span of {}", traceThread(played.call->thread)),
                            fmt::format("critical span of {}", played.thread),
                            played.call->thread,
                            0,
                            played.startNs};
        begin(span, dumpForTrace({{"criticalValue", record.criticalValue}}));
        mSpans[record.tid] = span;
    }
}

void TraceSpans::begin(const Slice& slice, const std::string& arguments) {
    mWrite(fmt::format(
            R"({{"ph":"b","cat":"{}","id":"{}","pid":{},"tid":{},"ts":{},"name":{},"args":{}}})",
            slice.category, slice.id, kTraceProcess, traceThread(slice.thread),
            traceTime(slice.fromNs), quoteForTrace(slice.name), arguments));
}

void TraceSpans::end(const Slice& slice, int64_t timeNs, bool isMatched) {
    mWrite(fmt::format(
            R"({{"ph":"e","cat":"{}","id":"{}","pid":{},"tid":{},"ts":{},"name":{},"args":{}}})",
            slice.category, slice.id, kTraceProcess, traceThread(slice.thread), traceTime(timeNs),
            quoteForTrace(slice.name), isMatched ? kNoArguments : R"({"end":"none"})"));
}

}  // namespace desk
