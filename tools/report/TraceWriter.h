/*
 * Writes a trace that chrome://tracing and Perfetto open: a track for every thread with the tasks
 * that it runs and the library's sections within, instants for vsync, counters for the frame rate
 * and the merged percent level. It is written as the session goes, not kept.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "log/LineSink.h"
#include "play/PlayedCall.h"
#include "trace/TraceCollector.h"

namespace desk {

class TraceWriter : public CallListener {
  public:
    // Switches the collection of sections on.
    explicit TraceWriter(std::shared_ptr<LineSink> sink);
    // Leaves a whole document, also after an error.
    ~TraceWriter() override;
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void onCall(const PlayedCall& played) override;
    // Ends what is open and the document.
    void finish();

  private:
    struct OpenSlice {
        uint32_t uniqueTaskId = 0;
        std::string name;
    };
    struct Track {
        bool isNamed = false;
        std::vector<OpenSlice> slices;  // outermost first
    };

    void nameTrack(const PlayedCall& played);
    void beginSlices(const PlayedCall& played);
    void writeSections(const PlayedCall& played);
    void writeInstants(const PlayedCall& played);
    void endSlices(const PlayedCall& played);
    void endAllSlices(int64_t timeNs);
    // Ends the thread's slices of the task. False when it has none.
    bool endTask(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs);
    std::string taskName(const PlayedCall& played, uint32_t uniqueTaskId) const;

    void write(std::string_view event);
    void writeBegin(uint32_t thread, int64_t timeNs, std::string_view name);
    void writeEnd(uint32_t thread, int64_t timeNs);

    std::shared_ptr<LineSink> mSink;
    std::vector<Track> mTracks;                            // by the session's thread number
    std::unordered_map<uint32_t, std::string> mTaskNames;  // by unique task id
    std::vector<TraceEvent> mSections;
    int64_t mLastNs = 0;
    bool mHasEvents = false;
    bool mIsFinished = false;
};

}  // namespace desk
