/*
 * How long the driver held each merged level.
 */
#pragma once

#include <cstdint>
#include <map>

#include "analysis/SessionFigures.h"
#include "play/PlayedCall.h"

namespace desk {

class LevelAnalysis {
  public:
    // The time of the first call.
    void begin(int64_t atUs) { mSinceUs = atUs; }
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    // `lastUs` is the time of the last call.
    LevelFigures figures(int64_t lastUs) const;

  private:
    void advanceTo(int64_t atUs);

    int64_t mSinceUs = 0;
    int32_t mPercentLevel = 0;
    ControlLevels mLevels = {};
    std::map<int32_t, int64_t> mPercentUs;
    std::map<ControlLevels, int64_t> mLevelsUs;
    int64_t mFurtherLevelsUs = 0;
};

}  // namespace desk
