#include "analysis/Distribution.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace desk {

namespace {

constexpr int kExactBits = 10;  // values of up to that many bits have a bucket each
constexpr size_t kBucketsOfPower = size_t{1} << (kExactBits - 1);

}  // namespace

size_t Distribution::bucketOf(int64_t us) {
    const auto value = static_cast<uint64_t>(us);
    const int bits = std::numeric_limits<uint64_t>::digits - std::countl_zero(value);
    if (bits <= kExactBits) {
        return value;
    }
    const int shift = bits - kExactBits;  // the leading bits select the bucket
    return static_cast<size_t>(shift) * kBucketsOfPower + (value >> shift);
}

int64_t Distribution::middleOf(size_t bucket) {
    if (bucket < 2 * kBucketsOfPower) {
        return static_cast<int64_t>(bucket);
    }
    const size_t shift = bucket / kBucketsOfPower - 1;
    const uint64_t leading = bucket - shift * kBucketsOfPower;
    return static_cast<int64_t>((leading << shift) + (uint64_t{1} << (shift - 1)));
}

void Distribution::add(int64_t us) {
    const size_t bucket = bucketOf(us);
    if (bucket >= mBuckets.size()) {
        mBuckets.resize(bucket + 1);
    }
    ++mBuckets[bucket];
    mShortestUs = mCount == 0 ? us : std::min(mShortestUs, us);
    mLongestUs = std::max(mLongestUs, us);
    ++mCount;
    mTotalUs += std::min(us, std::numeric_limits<int64_t>::max() - mTotalUs);
}

void Distribution::add(const Distribution& other) {
    if (other.mCount == 0) {
        return;
    }
    mBuckets.resize(std::max(mBuckets.size(), other.mBuckets.size()));
    for (size_t bucket = 0; bucket < other.mBuckets.size(); ++bucket) {
        mBuckets[bucket] += other.mBuckets[bucket];
    }
    mShortestUs = mCount == 0 ? other.mShortestUs : std::min(mShortestUs, other.mShortestUs);
    mLongestUs = std::max(mLongestUs, other.mLongestUs);
    mCount += other.mCount;
    mTotalUs += std::min(other.mTotalUs, std::numeric_limits<int64_t>::max() - mTotalUs);
}

int64_t Distribution::percentile(uint64_t percent) const {
    // Rounded up, in two parts so that no count overflows.
    const uint64_t rank = mCount / 100 * percent + (mCount % 100 * percent + 99) / 100;
    if (rank == mCount) {
        return mLongestUs;
    }
    uint64_t below = 0;
    for (size_t bucket = 0; bucket < mBuckets.size(); ++bucket) {
        below += mBuckets[bucket];
        if (below >= rank) {
            return std::clamp(middleOf(bucket), mShortestUs, mLongestUs);
        }
    }
    return 0;
}

DistributionFigures Distribution::figures() const {
    return {mCount, mTotalUs, mLongestUs, percentile(50), percentile(90), percentile(99)};
}

DistributionBars Distribution::bars(int64_t markUs) const {
    constexpr int64_t kMostBars = 64;
    DistributionBars bars;
    if (mCount == 0) {
        return bars;
    }
    bars.fromUs = std::min(mShortestUs, markUs);
    const int64_t rangeUs = std::max(percentile(99), markUs) - bars.fromUs;
    // No narrower than a bucket: otherwise bars without a bucket of their own would be empty.
    const auto narrowestUs = (bars.fromUs + rangeUs) / static_cast<int64_t>(kBucketsOfPower) + 1;
    bars.widthUs = std::max(rangeUs / (kMostBars - 2) + 1, narrowestUs);
    bars.counts.resize(static_cast<size_t>(rangeUs / bars.widthUs) + 2);
    forEachBucket([&bars](int64_t us, uint64_t count) {
        const auto place =
                static_cast<size_t>(std::max<int64_t>(us - bars.fromUs, 0) / bars.widthUs);
        (place < bars.counts.size() ? bars.counts[place] : bars.above) += count;
    });
    return bars;
}

}  // namespace desk
