/*
 * Writes a trace that chrome://tracing and Perfetto open: a track for every thread with the tasks
 * that it runs and the library's sections within, each with its arguments; asynchronous slices for
 * the passes of anchors and for critical spans; instants for vsync, for refused commands and for
 * calls that returned -1; counters for the frame rate and the merged levels. It is written while
 * the session is played and not kept in memory.
 */
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "log/LineSink.h"
#include "play/PlayedCall.h"
#include "report/TraceSpans.h"
#include "trace/TraceCollector.h"

namespace desk {

// The origin of the trace.
struct TraceSource {
    std::string session;
    std::string tuning;
};

class TraceWriter : public CallListener {
  public:
    // Switches the collection of sections on.
    TraceWriter(std::shared_ptr<LineSink> sink, TraceSource source);
    // Completes the document, also after an error.
    ~TraceWriter() override;
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void onCall(const PlayedCall& played) override;
    // Ends all open slices and the document.
    void finish();

  private:
    struct Task {
        std::string name;
        std::string arguments;  // as a JSON object
    };
    struct OpenSlice {
        uint32_t uniqueTaskId = 0;
        Task task;
    };
    struct Track {
        bool isNamed = false;
        std::vector<OpenSlice> slices;     // outermost first
        std::vector<TraceEvent> sections;  // of the last call, not written yet
        std::string callArguments;         // of that call, as a JSON object
        int64_t lastNs = -1;               // of the last event written
    };
    // Of a task, by the session's thread number.
    struct Run {
        uint32_t tid = 0;
    };
    struct Counter {
        const char* name = "";
        int64_t value = 0;
    };

    void nameTrack(const PlayedCall& played);
    void beginSlices(const PlayedCall& played);
    void writeSections(uint32_t thread, int64_t endNs);
    void writeInstants(const PlayedCall& played);
    void writeCounters(const PlayedCall& played);
    void endSlices(const PlayedCall& played);
    void endAllSlices(int64_t timeNs);
    // Ends the thread's slices of the task.
    void endTask(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs);
    Task taskOf(const PlayedCall& played, uint32_t uniqueTaskId) const;

    void write(std::string_view event);
    void writeInstant(const PlayedCall& played, std::string_view name, std::string_view scope,
                      std::string_view arguments);
    void writeCounter(Counter& counter, int64_t timeNs, int64_t value);
    // Writes the begin or end event of a slice. Both have its name and arguments, by which some
    // importers match them. Those of one track differ in time, because importers sort by it.
    void writeSliceEnd(char phase, uint32_t thread, int64_t timeNs, std::string_view name,
                       std::string_view arguments);

    std::shared_ptr<LineSink> mSink;
    TraceSource mSource;
    TraceSpans mSpans;
    std::vector<Track> mTracks;                            // by the session's thread number
    std::unordered_map<uint32_t, Task> mTasks;             // by unique task id
    std::unordered_map<uint32_t, std::vector<Run>> mRuns;  // by unique task id
    std::vector<TraceEvent> mSections;                     // reused for every call
    Counter mFps = {"fps"};
    Counter mPercentLevel = {"percentLevel"};
    std::array<Counter, std::tuple_size_v<ControlLevels>> mLevels;
    int64_t mLastNs = 0;
    bool mHasEvents = false;
    bool mIsFinished = false;
};

}  // namespace desk
