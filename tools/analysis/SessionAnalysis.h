/*
 * Computes the figures of a session while it is played, in memory that does not depend on its
 * length.
 */
#pragma once

#include <cstdint>
#include <map>

#include "analysis/AnchorAnalysis.h"
#include "analysis/ControlAnalysis.h"
#include "analysis/FrameAnalysis.h"
#include "analysis/LevelAnalysis.h"
#include "analysis/SessionFigures.h"
#include "analysis/SpanAnalysis.h"
#include "analysis/TaskAnalysis.h"
#include "analysis/ThreadTable.h"
#include "play/PlayedCall.h"

namespace desk {

class SessionAnalysis : public CallListener {
  public:
    // The listener is notified of each run, pass and span that ends, and has to outlive this.
    void tell(IntervalListener& listener);
    void onCall(const PlayedCall& played) override;

    // The figures of the calls so far.
    SessionFigures figures() const;
    const TaskAnalysis& tasks() const { return mTasks; }
    const AnchorAnalysis& anchors() const { return mAnchors; }

  private:
    void countCall(const PlayedCall& played);

    uint64_t mCalls = 0;
    int64_t mFirstUs = 0;
    int64_t mLastUs = 0;
    std::map<const CallInfo*, OperationFigures> mOperations;  // in the order of the call table
    ThreadTable mThreads;
    TaskAnalysis mTasks;
    SpanAnalysis mSpans;
    AnchorAnalysis mAnchors;
    FrameAnalysis mFrames;
    LevelAnalysis mLevels;
    ControlAnalysis mControls;
};

}  // namespace desk
