/*
 * The critical spans of threads.
 */
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "analysis/IntervalListener.h"
#include "analysis/SessionFigures.h"
#include "analysis/ThreadTable.h"
#include "play/PlayedCall.h"

namespace desk {

class SpanAnalysis {
  public:
    void tell(IntervalListener* listener) { mListener = listener; }
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    SpanFigures figures() const;
    std::vector<ActiveSpan> activeSpans(const ThreadTable& threads) const;

  private:
    struct Span {
        uint32_t thread = 0;        // number in the session
        int32_t criticalValue = 0;  // of the last start
        int64_t sinceUs = 0;
    };

    void start(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record);
    void end(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record);

    std::map<int32_t, Span> mOpen;  // by thread id
    Distribution mEnded;
    uint64_t mNestedStarts = 0;
    IntervalListener* mListener = nullptr;
};

}  // namespace desk
