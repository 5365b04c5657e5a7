/*
 * A row of the page's timeline, in memory that does not depend on the number of intervals. Up to a
 * limit they are kept exactly: first those above their target, then the longest. All others are
 * counted in cells of time, each narrower than a pixel when the page shows the whole session.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace desk {

// Times are in microseconds since the first call of the session.
struct PageInterval {
    int64_t atUs = 0;
    int64_t durationUs = 0;
    int32_t targetUs = 0;  // 0: none

    bool isOver() const { return targetUs > 0 && durationUs > targetUs; }
};

class IntervalRow {
  public:
    struct Cell {
        uint64_t count = 0;
        int64_t totalUs = 0;
        int64_t longestUs = 0;
        uint64_t over = 0;  // intervals above their target

        void add(const Cell& other);
    };

    void add(const PageInterval& interval);

    // Not sorted.
    const std::vector<PageInterval>& exact() const { return mExact; }
    // Cells of equal width from the start of the session on. An interval is counted in the cell in
    // which it begins.
    const std::vector<Cell>& cells() const { return mCells; }
    int64_t cellUs() const { return mCellUs; }

  private:
    void count(const PageInterval& interval);
    void doubleWidth();

    std::vector<PageInterval> mExact;  // a heap, the next one to remove on top
    std::vector<Cell> mCells;
    int64_t mCellUs = 1;
};

}  // namespace desk
