#include "report/page/IntervalRow.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace desk {

namespace {

// With the largest number of rows these keep the page below 10 MB.
constexpr size_t kMostExact = 1500;
constexpr size_t kMostCells = 2048;

// As the order of a heap it puts the least important interval on top.
bool isWorthMore(const PageInterval& one, const PageInterval& other) {
    return std::tuple(one.isOver(), one.durationUs) > std::tuple(other.isOver(), other.durationUs);
}

}  // namespace

void IntervalRow::Cell::add(const Cell& other) {
    count += other.count;
    totalUs += std::min(other.totalUs, std::numeric_limits<int64_t>::max() - totalUs);
    longestUs = std::max(longestUs, other.longestUs);
    over += other.over;
}

void IntervalRow::add(const PageInterval& interval) {
    mExact.push_back(interval);
    std::ranges::push_heap(mExact, isWorthMore);
    if (mExact.size() > kMostExact) {
        std::ranges::pop_heap(mExact, isWorthMore);
        count(mExact.back());
        mExact.pop_back();
    }
}

void IntervalRow::count(const PageInterval& interval) {
    while (interval.atUs / mCellUs >= static_cast<int64_t>(kMostCells)) {
        doubleWidth();
    }
    const auto place = static_cast<size_t>(interval.atUs / mCellUs);
    mCells.resize(std::max(mCells.size(), place + 1));
    mCells[place].add({1, interval.durationUs, interval.durationUs, interval.isOver() ? 1U : 0U});
}

void IntervalRow::doubleWidth() {
    mCellUs *= 2;
    for (size_t i = 1; i < mCells.size(); ++i) {
        const Cell cell = mCells[i];
        mCells[i] = {};
        mCells[i / 2].add(cell);
    }
    mCells.resize((mCells.size() + 1) / 2);
}

}  // namespace desk
