#include "report/page/LevelSeries.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace desk {

namespace {

constexpr size_t kMostChanges = 8192;

bool isLower(const LevelChange& one, const LevelChange& other) {
    return std::tie(one.percentLevel, one.uclampLevels) <
           std::tie(other.percentLevel, other.uclampLevels);
}

}  // namespace

void LevelSeries::add(const LevelChange& change) {
    if (change.hasLevelsOf(mChanges.empty() ? LevelChange() : mChanges.back())) {
        return;
    }
    mChanges.push_back(change);
    while (mChanges.size() > kMostChanges) {
        thinOut();
    }
}

void LevelSeries::thinOut() {
    mCellUs *= 2;
    std::vector<LevelChange> kept;
    for (auto first = mChanges.begin(); first != mChanges.end();) {
        const auto end = std::find_if(first, mChanges.end(), [&](const LevelChange& change) {
            return change.atUs / mCellUs != first->atUs / mCellUs;
        });
        const auto highest = std::max_element(first, end, isLower);
        if (highest != end - 1) {
            kept.push_back(*highest);
        }
        kept.push_back(*(end - 1));
        first = end;
    }
    mLeftOut += mChanges.size() - kept.size();
    mChanges = std::move(kept);
}

}  // namespace desk
