/*
 * The vsyncs of a session, and the frame rates that it reported to the driver.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "analysis/SessionFigures.h"
#include "play/PlayedCall.h"

namespace desk {

class FrameAnalysis {
  public:
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    // `lastUs` is the time of the last call.
    FrameFigures figures(int64_t lastUs) const;

  private:
    void takeVsync(int64_t atUs);
    void takeFrameRate(uint32_t fps, int64_t atUs);
    void endStretch(int64_t atUs);
    VsyncFigures vsyncFigures() const;

    uint64_t mVsyncs = 0;
    std::optional<int64_t> mLastVsyncUs;
    Distribution mIntervals;
    std::optional<FrameRateStretch> mOpen;
    std::vector<FrameRateStretch> mStretches;
    uint64_t mFurtherStretches = 0;
};

}  // namespace desk
