/*
 * The merged levels of the controls over time, in bounded memory: when there are too many changes,
 * time is divided into cells, and each keeps the change with the highest level and its last one.
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
    // Ordered by time.
    void add(const LevelChange& change);

    const std::vector<LevelChange>& changes() const { return mChanges; }
    uint64_t leftOut() const { return mLeftOut; }

  private:
    void thinOut();

    std::vector<LevelChange> mChanges;
    int64_t mCellUs = 1;  // each cell keeps two changes
    uint64_t mLeftOut = 0;
};

}  // namespace desk
