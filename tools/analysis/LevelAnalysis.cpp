#include "analysis/LevelAnalysis.h"

namespace desk {

namespace {

constexpr size_t kMostLevels = 256;  // distinct levels whose times are counted separately

}  // namespace

void LevelAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    if (command.control) {
        advanceTo(played.call->atUs);
        mPercentLevel = command.control->percentLevel;
        mLevels = command.control->uclampLevels;
    }
}

void LevelAnalysis::advanceTo(int64_t atUs) {
    const int64_t timeUs = atUs - mSinceUs;
    mSinceUs = atUs;
    if (timeUs == 0) {
        return;
    }
    mPercentUs[mPercentLevel] += timeUs;
    if (mLevelsUs.contains(mLevels) || mLevelsUs.size() < kMostLevels) {
        mLevelsUs[mLevels] += timeUs;
    } else {
        mFurtherLevelsUs += timeUs;
    }
}

LevelFigures LevelAnalysis::figures(int64_t lastUs) const {
    LevelAnalysis closed = *this;
    closed.advanceTo(lastUs);
    return {{closed.mPercentUs.begin(), closed.mPercentUs.end()},
            {closed.mLevelsUs.begin(), closed.mLevelsUs.end()},
            closed.mFurtherLevelsUs};
}

}  // namespace desk
