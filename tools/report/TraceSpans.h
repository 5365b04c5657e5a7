/*
 * Asynchronous slices of a trace: the passes of anchors, the critical spans of threads, and runs
 * for which the track of their thread has no room. They may begin and end on different threads, and
 * overlap other slices in any way.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "play/PlayedCall.h"

namespace desk {

class TraceSpans {
  public:
    // `write` is called with each event as a JSON object.
    explicit TraceSpans(std::function<void(const std::string&)> write);

    void onCall(const PlayedCall& played);
    // Has no effect when a run of the task by the thread is open here already.
    void beginRun(const PlayedCall& played, uint32_t uniqueTaskId, std::string_view task,
                  const std::string& arguments);
    // False when no run of the task by the thread is open here.
    bool endRun(uint32_t thread, uint32_t uniqueTaskId, int64_t timeNs);
    // Ends all open slices.
    void endAll(int64_t timeNs);

  private:
    struct Slice {
        const char* category = "";
        std::string id;
        std::string name;
        uint32_t thread = 0;  // number in the session
        uint32_t serial = 0;  // of a pass
        int64_t fromNs = 0;
    };

    void takeAnchor(const PlayedCall& played, const VELK_ANCHOR_PARAM& record);
    void takeSpan(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record, bool isStart);
    void begin(const Slice& slice, const std::string& arguments);
    void end(const Slice& slice, int64_t timeNs, bool isMatched);

    std::function<void(const std::string&)> mWrite;
    std::map<int32_t, std::deque<Slice>> mPasses;          // by anchor, newest last
    std::map<int32_t, Slice> mSpans;                       // by thread id
    std::map<std::pair<uint32_t, uint32_t>, Slice> mRuns;  // by thread and unique task id
};

}  // namespace desk
