#include "report/TraceWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "driver/RecordCopy.h"
#include "driver/RecordDecoder.h"
#include "driver/TaskRuns.h"
#include "report/RecordJson.h"
#include "report/RowFilter.h"
#include "report/TraceText.h"

namespace desk {

namespace {

// The scope of an instant event.
constexpr const char* kThread = "t";
constexpr const char* kGlobal = "g";

using nlohmann::ordered_json;

// The most nested runs on a track. The end of an outer one splits each of them in two.
constexpr size_t kMostNested = 16;

// By place.
constexpr std::array<const char*, std::tuple_size_v<ControlLevels>> kLevelNames = {
        "uclampLevel 0", "uclampLevel 1", "uclampLevel 2", "uclampLevel 3",
        "uclampLevel 4", "uclampLevel 5", "uclampLevel 6", "uclampLevel 7"};

// The arguments of the call, and the commands that it sent.
std::string describeArguments(const PlayedCall& played) {
    ordered_json arguments = argumentsToJson(played);
    for (size_t i = 0; i < played.commands.size(); ++i) {
        const ReceivedCommand& command = played.commands[i];
        if (command.command != nullptr) {
            arguments[fmt::format("command {}: {}", i + 1, command.command->name)] =
                    describeRecord(*command.command, recordToPrint(played, command).data());
        }
    }
    return dumpForTrace(arguments);
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

TraceWriter::TraceWriter(std::shared_ptr<LineSink> sink, TraceSource source)
    : mSink(std::move(sink)),
      mSource(std::move(source)),
      mSpans([this](const std::string& event) { write(event); }) {
    for (size_t i = 0; i < mLevels.size(); ++i) {
        mLevels[i].name = kLevelNames[i];
    }
    mSink->writeLine(R"({"displayTimeUnit":"ms","traceEvents":[)");
    write(fmt::format(
            R"({{"ph":"M","pid":{},"name":"process_name","args":{{"name":"camera session"}}}})",
            kTraceProcess));
    write(fmt::format(R"({{"ph":"M","pid":{},"name":"process_labels","args":{{"labels":{}}}}})",
                      kTraceProcess,
                      quoteForTrace(fmt::format("session {}, tuning {}, version {}",
                                                mSource.session, mSource.tuning, VELK_VERSION))));
    setTracing(true);
}

TraceWriter::~TraceWriter() {
    finish();
}

// A task's slice begins and ends at the recorded times of the calls that start and end it. The
// sections of a call are kept until the next event of their thread is known, because they must not
// extend beyond it.
void TraceWriter::onCall(const PlayedCall& played) {
    mLastNs = std::max(mLastNs, played.endNs);
    nameTrack(played);
    writeSections(played.call->thread, played.startNs);
    endSlices(played);
    beginSlices(played);
    mSpans.onCall(played);
    writeInstants(played);
    writeCounters(played);
    Track& track = mTracks[played.call->thread];
    if (played.sections != nullptr) {
        track.sections = *played.sections;
    } else {
        drainTrace(mSections);
        track.sections.assign(mSections.begin(), mSections.end());
    }
    track.callArguments = describeArguments(played);
}

void TraceWriter::finish() {
    setTracing(false);
    if (!std::exchange(mIsFinished, true)) {
        endAllSlices(mLastNs);
        mSpans.endAll(mLastNs);
        mSink->writeLine(fmt::format(R"(],"otherData":{}}})",
                                     dumpForTrace({{"session", mSource.session},
                                                   {"tuning", mSource.tuning},
                                                   {"version", VELK_VERSION},
                                                   {"droppedSections", droppedTraceEvents()}})));
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
                kTraceProcess, traceThread(number), quoteForTrace(played.thread)));
    }
}

void TraceWriter::beginSlices(const PlayedCall& played) {
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr && command.request == VELK_IOC_TASK_INIT) {
            const auto record = copyRecord<VELK_TASK_INIT_PARAM>(command.record.data());
            mTasks[record.uniqueTaskId] = {std::string(taskNameOf(record)),
                                           dumpForTrace({{"uniqueTaskId", record.uniqueTaskId},
                                                         {"targetTime", record.targetTime},
                                                         {"defaultUclamp", record.defaultUclamp}})};
        }
    }
    forEachAccepted<VELK_TASK_PARAM>(
            played, VELK_IOC_TASK_START, [this, &played](const VELK_TASK_PARAM& record) {
                Task task = taskOf(played, record.uniqueTaskId);
                std::vector<OpenSlice>& slices = mTracks[played.call->thread].slices;
                mRuns[record.uniqueTaskId].push_back({played.call->thread});
                if (slices.size() < kMostNested) {
                    writeSliceEnd('B', played.call->thread, played.startNs, task.name,
                                  task.arguments);
                    slices.push_back({record.uniqueTaskId, std::move(task)});
                } else {
                    mSpans.beginRun(played, record.uniqueTaskId, task.name, task.arguments);
                }
            });
}

// Writes the sections kept for the thread's track, cut at `endNs`.
void TraceWriter::writeSections(uint32_t thread, int64_t endNs) {
    Track& track = mTracks[thread];
    std::vector<std::pair<std::string_view, std::string_view>> open;  // name and arguments
    auto left = static_cast<int64_t>(track.sections.size());  // section events, a nanosecond each
    for (const TraceEvent& section : track.sections) {
        const int64_t timeNs = std::min(section.timeNs, endNs - left--);
        if (section.phase == TracePhase::Begin) {
            // The outermost section is that of the call.
            open.emplace_back(section.name(),
                              open.empty() ? std::string_view(track.callArguments) : kNoArguments);
            writeSliceEnd('B', thread, timeNs, open.back().first, open.back().second);
        } else if (!open.empty()) {
            writeSliceEnd('E', thread, timeNs, open.back().first, open.back().second);
            open.pop_back();
        }
    }
    track.sections.clear();
}

void TraceWriter::writeInstants(const PlayedCall& played) {
    for (const ReceivedCommand& command : played.commands) {
        if (isRefusal(command.verdict)) {
            ordered_json arguments = {{"errno", errorName(command.error)}};
            if (!command.finding.empty()) {
                arguments["finding"] = command.finding;
            }
            writeInstant(played, fmt::format("{} refused", commandName(command)), kThread,
                         dumpForTrace(arguments));
        } else if (command.request == VELK_IOC_VSYNC) {
            writeInstant(played, "vsync", kGlobal, kNoArguments);
        }
    }
    if (played.result != 0) {
        ordered_json arguments = argumentsToJson(played);
        if (!played.problem.empty()) {
            arguments["message"] = played.problem;
        }
        writeInstant(played, fmt::format("{} returned -1", played.call->info->name), kThread,
                     dumpForTrace(arguments));
    }
}

void TraceWriter::writeInstant(const PlayedCall& played, std::string_view name,
                               std::string_view scope, std::string_view arguments) {
    write(fmt::format(R"({{"ph":"i","pid":{},"tid":{},"ts":{},"name":{},"s":"{}","args":{}}})",
                      kTraceProcess, traceThread(played.call->thread), traceTime(played.startNs),
                      quoteForTrace(name), scope, arguments));
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
            for (size_t i = 0; i < mLevels.size(); ++i) {
                writeCounter(mLevels[i], played.startNs, command.control->uclampLevels[i]);
            }
        }
    }
}

void TraceWriter::writeCounter(Counter& counter, int64_t timeNs, int64_t value) {
    if (std::exchange(counter.value, value) != value) {
        write(fmt::format(R"({{"ph":"C","pid":{},"ts":{},"name":"{}","args":{{"{}":{}}}}})",
                          kTraceProcess, traceTime(timeNs), counter.name, counter.name, value));
    }
}

void TraceWriter::endSlices(const PlayedCall& played) {
    forEachAccepted<VELK_TASK_PARAM>(
            played, VELK_IOC_TASK_END, [this, &played](const VELK_TASK_PARAM& record) {
                endRuns(mRuns[record.uniqueTaskId], played.call->thread, [&](const Run& run) {
                    endTask(run.tid, record.uniqueTaskId, played.startNs);
                });
            });
    // An uninit removes all tasks, also those that were not ended, and so does an init.
    forEachAccepted<VELK_INIT_PARAM>(
            played, VELK_IOC_INIT,
            [this, &played](const VELK_INIT_PARAM&) { endAllSlices(played.startNs); });
    forEachAccepted<VELK_UNINIT_PARAM>(
            played, VELK_IOC_UNINIT,
            [this, &played](const VELK_UNINIT_PARAM&) { endAllSlices(played.startNs); });
}

void TraceWriter::endAllSlices(int64_t timeNs) {
    for (uint32_t thread = 0; thread < mTracks.size(); ++thread) {
        writeSections(thread, timeNs);
        for (; !mTracks[thread].slices.empty(); mTracks[thread].slices.pop_back()) {
            const Task& task = mTracks[thread].slices.back().task;
            writeSliceEnd('E', thread, timeNs, task.name, task.arguments);
        }
    }
    mRuns.clear();
}

// Slices of a track must be nested. Those inside the outermost slice that ends are split in two.
void TraceWriter::endTask(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs) {
    const auto isOfTask = [=](const OpenSlice& slice) {
        return slice.uniqueTaskId == uniqueTaskId;
    };
    std::vector<OpenSlice>& slices = mTracks[thread].slices;
    const auto first = std::find_if(slices.begin(), slices.end(), isOfTask);
    if (mSpans.endRun(thread, uniqueTaskId, timeNs) || first == slices.end()) {
        return;  // has ended with another run of the task on this thread
    }
    writeSections(thread, timeNs);
    for (auto above = slices.end(); above != first;) {
        --above;
        writeSliceEnd('E', thread, timeNs, above->task.name, above->task.arguments);
    }
    const auto place = first - slices.begin();
    std::erase_if(slices, isOfTask);
    for (auto above = slices.begin() + place; above != slices.end(); ++above) {
        writeSliceEnd('B', thread, timeNs, above->task.name, above->task.arguments);
    }
}

TraceWriter::Task TraceWriter::taskOf(const PlayedCall& played, uint32_t uniqueTaskId) const {
    const auto known = mTasks.find(uniqueTaskId);
    Task task = known != mTasks.end() ? known->second : Task{"", kNoArguments};
    if (task.name.empty()) {
        const std::optional<int32_t>& number = played.call->arguments.task;
        task.name = number ? fmt::format("task {}", *number) : "task";
    }
    return task;
}

void TraceWriter::write(std::string_view event) {
    mSink->writeLine(mHasEvents ? fmt::format(",{}", event) : std::string(event));
    mHasEvents = true;
}

void TraceWriter::writeSliceEnd(char phase, uint32_t thread, int64_t timeNs, std::string_view name,
                                std::string_view arguments) {
    Track& track = mTracks[thread];
    track.lastNs = std::max(timeNs, track.lastNs + 1);
    write(fmt::format(R"({{"ph":"{}","pid":{},"tid":{},"ts":{},"name":{},"args":{}}})", phase,
                      kTraceProcess, traceThread(thread), traceTime(track.lastNs),
                      quoteForTrace(name), arguments));
}

}  // namespace desk
