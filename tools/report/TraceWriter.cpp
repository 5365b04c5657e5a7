#include "report/TraceWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "driver/RecordCopy.h"
#include "driver/TaskRuns.h"

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

// A task's slice begins and ends at the recorded times of the calls that start and end it. The
// sections of a call wait until the next event of their thread is known, because they must not
// reach beyond it.
void TraceWriter::onCall(const PlayedCall& played) {
    mLastNs = std::max(mLastNs, played.endNs);
    nameTrack(played);
    writeSections(played.call->thread, played.startNs);
    endSlices(played);
    beginSlices(played);
    writeInstants(played);
    writeCounters(played);
    drainTrace(mSections);
    mTracks[played.call->thread].sections.assign(mSections.begin(), mSections.end());
}

void TraceWriter::finish() {
    setTracing(false);
    if (!std::exchange(mIsFinished, true)) {
        endAllSlices(mLastNs);
        mSink->writeLine(
                fmt::format(R"(],"otherData":{{"droppedSections":{}}}}})", droppedTraceEvents()));
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
    forEachAccepted<VELK_TASK_PARAM>(
            played, VELK_IOC_TASK_START, [this, &played](const VELK_TASK_PARAM& record) {
                std::string name = taskName(played, record.uniqueTaskId);
                writeBegin(played.call->thread, played.startNs, name);
                mTracks[played.call->thread].slices.push_back(
                        {record.uniqueTaskId, std::move(name)});
                mRuns[record.uniqueTaskId].push_back({played.call->thread});
            });
}

// Writes the sections that wait on the thread's track, and cuts what is later than `endNs`.
void TraceWriter::writeSections(uint32_t thread, int64_t endNs) {
    for (const TraceEvent& section : mTracks[thread].sections) {
        const int64_t timeNs = std::min(section.timeNs, endNs);
        if (section.phase == TracePhase::Begin) {
            writeBegin(thread, timeNs, section.name());
        } else {
            writeEnd(thread, timeNs);
        }
    }
    mTracks[thread].sections.clear();
}

void TraceWriter::writeInstants(const PlayedCall& played) {
    forEachAccepted<VELK_VSYNC_PARAM>(
            played, VELK_IOC_VSYNC, [this, &played](const VELK_VSYNC_PARAM&) {
                write(fmt::format(
                        R"({{"ph":"i","pid":{},"tid":{},"ts":{},"name":"vsync","s":"g"}})",
                        kProcess, traceThread(played.call->thread), microseconds(played.startNs)));
            });
}

void TraceWriter::writeCounters(const PlayedCall& played) {
    forEachAccepted<VELK_CAM_FPS_PARAM>(played, VELK_IOC_CAM_FPS,
                                        [this, &played](const VELK_CAM_FPS_PARAM& record) {
                                            writeCounter(mFps, played.startNs, record.fps);
                                        });
    forEachAccepted<VELK_UNINIT_PARAM>(
            played, VELK_IOC_UNINIT,
            [this, &played](const VELK_UNINIT_PARAM&) { writeCounter(mFps, played.startNs, 0); });
    for (const ReceivedCommand& command : played.commands) {
        if (command.control) {
            writeCounter(mPercentLevel, played.startNs, command.control->percentLevel);
        }
    }
}

void TraceWriter::writeCounter(Counter& counter, int64_t timeNs, int64_t value) {
    if (std::exchange(counter.value, value) != value) {
        write(fmt::format(R"({{"ph":"C","pid":{},"ts":{},"name":"{}","args":{{"{}":{}}}}})",
                          kProcess, microseconds(timeNs), counter.name, counter.name, value));
    }
}

void TraceWriter::endSlices(const PlayedCall& played) {
    forEachAccepted<VELK_TASK_PARAM>(
            played, VELK_IOC_TASK_END, [this, &played](const VELK_TASK_PARAM& record) {
                endRuns(mRuns[record.uniqueTaskId], played.call->thread, [&](const Run& run) {
                    endTask(run.tid, record.uniqueTaskId, played.startNs);
                });
            });
    // With the library all tasks are gone, also those that nobody ended.
    forEachAccepted<VELK_UNINIT_PARAM>(
            played, VELK_IOC_UNINIT,
            [this, &played](const VELK_UNINIT_PARAM&) { endAllSlices(played.startNs); });
}

void TraceWriter::endAllSlices(int64_t timeNs) {
    for (uint32_t thread = 0; thread < mTracks.size(); ++thread) {
        writeSections(thread, timeNs);
        for (; !mTracks[thread].slices.empty(); mTracks[thread].slices.pop_back()) {
            writeEnd(thread, timeNs);
        }
    }
    mRuns.clear();
}

// Slices of a track must lie within one another. Others above the first that ends are cut in two.
void TraceWriter::endTask(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs) {
    const auto isOfTask = [=](const OpenSlice& slice) {
        return slice.uniqueTaskId == uniqueTaskId;
    };
    std::vector<OpenSlice>& slices = mTracks[thread].slices;
    const auto first = std::find_if(slices.begin(), slices.end(), isOfTask);
    if (first == slices.end()) {
        return;  // ended together with another run of the task on this thread
    }
    writeSections(thread, timeNs);
    for (auto above = first; above != slices.end(); ++above) {
        writeEnd(thread, timeNs);
    }
    const auto place = first - slices.begin();
    std::erase_if(slices, isOfTask);
    for (auto above = slices.begin() + place; above != slices.end(); ++above) {
        writeBegin(thread, timeNs, above->name);
    }
}

std::string TraceWriter::taskName(const PlayedCall& played, uint32_t uniqueTaskId) const {
    const auto known = mTaskNames.find(uniqueTaskId);
    if (known != mTaskNames.end() && !known->second.empty()) {
        return known->second;
    }
    const std::optional<int32_t>& task = played.call->arguments.task;
    return task ? fmt::format("task {}", *task) : "task";
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
