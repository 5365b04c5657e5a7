/*
 * What the page of a session keeps of a long one.
 */
#include <gtest/gtest.h>

#include <algorithm>

#include "report/page/IntervalRow.h"
#include "report/page/LevelSeries.h"

namespace desk {
namespace {

TEST(IntervalRow, KeepsTheLateAndTheLongestExactAndCountsAllOthers) {
    IntervalRow row;
    constexpr int64_t kCount = 20000;
    for (int64_t i = 0; i < kCount; ++i) {
        // Some are late, though shorter than all others.
        row.add({i * 1000, i % 100 == 0 ? 5 : 100 + i % 777, i % 100 == 0 ? 1 : 0});
    }
    row.add({kCount * 1000, 1'000'000'000'000'000, 0});
    const auto late = std::ranges::count_if(row.exact(), &PageInterval::isOver);
    EXPECT_EQ(late, kCount / 100);
    EXPECT_EQ(std::ranges::max(row.exact(), {}, &PageInterval::durationUs).atUs, kCount * 1000);
    IntervalRow::Cell all;
    for (const IntervalRow::Cell& cell : row.cells()) {
        all.add(cell);
    }
    const auto shortestExact = std::ranges::min(row.exact(), {}, [](const PageInterval& each) {
        return each.isOver() ? INT64_MAX : each.durationUs;
    });
    EXPECT_LE(all.longestUs, shortestExact.durationUs);
    EXPECT_EQ(all.over, 0U);
    EXPECT_EQ(all.count + row.exact().size(), static_cast<size_t>(kCount + 1));
    EXPECT_LE(row.exact().size() + row.cells().size(), 4000U);
    EXPECT_GT(row.cells().size(), 1000U) << "wider cells than a pixel";
}

TEST(LevelSeries, KeepsPeaksAndTheLastLevels) {
    LevelSeries series;
    int64_t atUs = 0;
    for (int i = 0; i < 100000; ++i, atUs += 10) {
        series.add({atUs, i == 54321 ? 99 : i % 2 + 1, {}});
        series.add({atUs, i == 54321 ? 99 : i % 2 + 1, {}});
    }
    EXPECT_LE(series.changes().size(), 8192U);
    EXPECT_EQ(series.changes().size() + series.leftOut(), 100000U);
    EXPECT_EQ(series.changes().back().atUs, 999990);
    EXPECT_EQ(std::ranges::count(series.changes(), 99, &LevelChange::percentLevel), 1);
}

}  // namespace
}  // namespace desk
