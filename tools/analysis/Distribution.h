/*
 * How times are distributed, in memory that does not depend on how many there are.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace desk {

struct DistributionFigures {
    uint64_t count = 0;
    int64_t totalUs = 0;  // saturates at the largest value of its type
    int64_t longestUs = 0;
    int64_t p50Us = 0;  // percentiles by nearest rank; all figures are 0 when there are no times
    int64_t p90Us = 0;
    int64_t p99Us = 0;
};

// A histogram: how many times lie in each of several adjacent ranges of the same width.
struct DistributionBars {
    int64_t fromUs = 0;
    int64_t widthUs = 1;
    std::vector<uint64_t> counts;
    uint64_t above = 0;  // times above the last range
};

/*
 * Counts times in the buckets of an HDR histogram: those below 1024 us have a bucket each, above
 * every power of two is divided into 512 buckets of the same width. So a percentile is exact below
 * 1024 us, and above it is off by at most half the width of a bucket, 1/1024 of its value. All
 * other figures are exact.
 */
class Distribution {
  public:
    void add(int64_t us);  // not negative
    void add(const Distribution& other);

    // The smallest time that at least that percentage (1 to 100) of the times does not exceed.
    int64_t percentile(uint64_t percent) const;
    DistributionFigures figures() const;
    // A histogram from the shortest time, or from `markUs` if that is shorter, to a little above
    // the 99th percentile and `markUs`.
    DistributionBars bars(int64_t markUs) const;

    uint64_t count() const { return mCount; }
    int64_t totalUs() const { return mTotalUs; }

    // Calls `use(us, count)` with the middle of each bucket that is not empty, in ascending order.
    template <typename Use>
    void forEachBucket(Use&& use) const {
        for (size_t bucket = 0; bucket < mBuckets.size(); ++bucket) {
            if (mBuckets[bucket] > 0) {
                use(middleOf(bucket), mBuckets[bucket]);
            }
        }
    }

  private:
    static size_t bucketOf(int64_t us);
    static int64_t middleOf(size_t bucket);

    uint64_t mCount = 0;
    int64_t mTotalUs = 0;
    int64_t mShortestUs = 0;
    int64_t mLongestUs = 0;
    std::vector<uint64_t> mBuckets;  // up to the highest one that is not empty
};

}  // namespace desk
