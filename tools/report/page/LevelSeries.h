/*
 * The merged levels of the controls over time, in bounded memory: where there are too many changes,
 * of those that lie close together the one with the highest level and the last one stay.
 */
#pragma once

#include <cstdint>
#include <vector>

#include "driver/MergedControl.h"

namespace desk {

struct LevelChange {
    int64_t atUs = 0;  // since the first call of the session
    int32_t percentLevel = 0;
    ControlLevels uclampLevels = {};

    bool hasLevelsOf(const LevelChange& other) const {
        return percentLevel == other.percentLevel && uclampLevels == other.uclampLevels;
    }
};

class LevelSeries {
  public:
    // In the order of time.
    void add(const LevelChange& change);

    const std::vector<LevelChange>& changes() const { return mChanges; }
    uint64_t leftOut() const { return mLeftOut; }

  private:
    void thinOut();

    std::vector<LevelChange> mChanges;
    int64_t mCellUs = 1;  // within which two changes stay
    uint64_t mLeftOut = 0;
};

}  // namespace desk
