#include "report/TraceWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "driver/RecordCopy.h"

namespace desk {

namespace {

// All threads belong to one process.
constexpr int kProcess = 1;

std::string quote(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The trace's times are in microseconds.
std::string microseconds(int64_t ns) {
    constexpr int64_t kNsPerUs = 1000;
    return fmt::format("{}.{:03}", ns / kNsPerUs, ns % kNsPerUs);
}

// Thread numbers as they stand in the trace, where 0 is the idle thread.
uint32_t traceThread(uint32_t thread) {
    return thread + 1;
}

template <typename Record, typename Use>
void forEachAccepted(const PlayedCall& played, uint32_t request, Use&& use) {
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr && command.request == request &&
            !isRefusal(command.verdict)) {
            use(copyRecord<Record>(command.record.data()));
        }
    }
}

}  // namespace

TraceWriter::TraceWriter(std::shared_ptr<LineSink> sink) : mSink(std::move(sink)) {
    mSink->writeLine(R"({"displayTimeUnit":"ms","traceEvents":[)");
    write(fmt::format(
            R"({{"ph":"M","pid":{},"name":"process_name","args":{{"name":"camera session"}}}})",
            kProcess));
    setTracing(true);
}

TraceWriter::~TraceWriter() {
    finish();
}

// A task's slice begins before the section of the call that starts it and ends after the section of
// the call that ends it, so that slices and sections lie within one another.
void TraceWriter::onCall(const PlayedCall& played) {
    mLastNs = played.endNs;
    nameTrack(played);
    beginSlices(played);
    writeInstants(played);
    writeSections(played);
    endSlices(played);
}

void TraceWriter::finish() {
    setTracing(false);
    if (!std::exchange(mIsFinished, true)) {
        endAllSlices(mLastNs);
        mSink->writeLine("]}");
    }
}

void TraceWriter::nameTrack(const PlayedCall& played) {
    const uint32_t number = played.call->thread;
    if (number >= mTracks.size()) {
        mTracks.resize(number + 1);
    }
    Track& track = mTracks[number];
    if (!track.isNamed) {
        track.isNamed = true;
        write(fmt::format(
                R"({{"ph":"M","pid":{},"tid":{},"name":"thread_name","args":{{"name":{}}}}})",
                kProcess, traceThread(number), quote(played.thread)));
    }
}

void TraceWriter::beginSlices(const PlayedCall& played) {
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr && command.request == VELK_IOC_TASK_INIT) {
            const auto record = copyRecord<VELK_TASK_INIT_PARAM>(command.record.data());
            mTaskNames[record.uniqueTaskId] = taskNameOf(record);
        }
    }
    forEachAccepted<VELK_TASK_PARAM>(played, VELK_IOC_TASK_START,
                                     [this, &played](const VELK_TASK_PARAM& record) {
                                         std::string name = taskName(played, record.uniqueTaskId);
                                         writeBegin(played.call->thread, played.startNs, name);
                                         mTracks[played.call->thread].slices.push_back(
                                                 {record.uniqueTaskId, std::move(name)});
                                     });
}

void TraceWriter::writeSections(const PlayedCall& played) {
    drainTrace(mSections);
    for (const TraceEvent& section : mSections) {
        if (section.phase == TracePhase::Begin) {
            writeBegin(played.call->thread, section.timeNs, section.name());
        } else {
            writeEnd(played.call->thread, section.timeNs);
        }
    }
}

void TraceWriter::writeInstants(const PlayedCall& played) {
    const std::string time = microseconds(played.startNs);
    forEachAccepted<VELK_VSYNC_PARAM>(
            played, VELK_IOC_VSYNC, [this, &played, &time](const VELK_VSYNC_PARAM&) {
                write(fmt::format(
                        R"({{"ph":"i","pid":{},"tid":{},"ts":{},"name":"vsync","s":"g"}})",
                        kProcess, traceThread(played.call->thread), time));
            });
    forEachAccepted<VELK_CAM_FPS_PARAM>(
            played, VELK_IOC_CAM_FPS, [this, &time](const VELK_CAM_FPS_PARAM& record) {
                write(fmt::format(
                        R"({{"ph":"C","pid":{},"ts":{},"name":"fps","args":{{"fps":{}}}}})",
                        kProcess, time, record.fps));
            });
    forEachAccepted<VELK_SINGLE_SHOT_PARAM>(
            played, VELK_IOC_SINGLE_SHOT, [this, &time](const VELK_SINGLE_SHOT_PARAM& record) {
                constexpr int32_t kNoRequest = -1;  // leaves the merged level as it is
                if (record.percentLevel != kNoRequest) {
                    write(fmt::format(R"({{"ph":"C","pid":{},"ts":{},"name":"percentLevel",)"
                                      R"("args":{{"percentLevel":{}}}}})",
                                      kProcess, time, std::max(record.percentLevel, 0)));
                }
            });
}

void TraceWriter::endSlices(const PlayedCall& played) {
    forEachAccepted<VELK_TASK_PARAM>(
            played, VELK_IOC_TASK_END, [this, &played](const VELK_TASK_PARAM& record) {
                if (endTask(played.call->thread, record.uniqueTaskId, played.endNs)) {
                    return;
                }
                // The thread ends what others have started.
                for (uint32_t thread = 0; thread < mTracks.size(); ++thread) {
                    endTask(thread, record.uniqueTaskId, played.endNs);
                }
            });
    // With the library all tasks are gone, also those that nobody ended.
    forEachAccepted<VELK_UNINIT_PARAM>(
            played, VELK_IOC_UNINIT,
            [this, &played](const VELK_UNINIT_PARAM&) { endAllSlices(played.endNs); });
}

void TraceWriter::endAllSlices(int64_t timeNs) {
    for (uint32_t thread = 0; thread < mTracks.size(); ++thread) {
        for (; !mTracks[thread].slices.empty(); mTracks[thread].slices.pop_back()) {
            writeEnd(thread, timeNs);
        }
    }
}

// Slices of a track must lie within one another. Others above the first that ends are cut in two.
bool TraceWriter::endTask(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs) {
    const auto isOfTask = [=](const OpenSlice& slice) {
        return slice.uniqueTaskId == uniqueTaskId;
    };
    std::vector<OpenSlice>& slices = mTracks[thread].slices;
    const auto first = std::find_if(slices.begin(), slices.end(), isOfTask);
    if (first == slices.end()) {
        return false;
    }
    for (auto above = first; above != slices.end(); ++above) {
        writeEnd(thread, timeNs);
    }
    const auto place = first - slices.begin();
    std::erase_if(slices, isOfTask);
    for (auto above = slices.begin() + place; above != slices.end(); ++above) {
        writeBegin(thread, timeNs, above->name);
    }
    return true;
}

std::string TraceWriter::taskName(const PlayedCall& played, uint32_t uniqueTaskId) const {
    const auto known = mTaskNames.find(uniqueTaskId);
    if (known != mTaskNames.end() && !known->second.empty()) {
        return known->second;
    }
    const auto* call = std::get_if<TaskStartCall>(&played.call->operation);
    return call != nullptr ? fmt::format("task {}", call->task) : "task";
}

void TraceWriter::write(std::string_view event) {
    mSink->writeLine(mHasEvents ? fmt::format(",{}", event) : std::string(event));
    mHasEvents = true;
}

void TraceWriter::writeBegin(uint32_t thread, int64_t timeNs, std::string_view name) {
    write(fmt::format(R"({{"ph":"B","pid":{},"tid":{},"ts":{},"name":{}}})", kProcess,
                      traceThread(thread), microseconds(timeNs), quote(name)));
}

void TraceWriter::writeEnd(uint32_t thread, int64_t timeNs) {
    write(fmt::format(R"({{"ph":"E","pid":{},"tid":{},"ts":{}}})", kProcess, traceThread(thread),
                      microseconds(timeNs)));
}

}  // namespace desk
