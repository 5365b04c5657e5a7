/*
 * The latency and jitter targets of the anchors, and the anchors that turned out to have none. The
 * tuning data sets the targets once. Two debugging properties override them and may change between
 * two calls.
 */
#pragma once

#include <array>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "VELKTypes.h"
#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"

class VELK_INTERNAL AnchorTable {
  public:
    // What the tuning data sets: {latency target, jitter target}.
    using Targets = std::array<int, 2>;

    // Fetches the platform's targets for the scenario and the customer's, which replace the
    // platform's unless they are 0.
    [[gnu::cold]] void load(const VELKInitParams& params) VELK_EXCLUDES(mMutex);

    // For the start of an anchor. Empty when the anchor is invalid; an anchor that has neither
    // target in force becomes invalid for good.
    std::optional<Targets> validate(int anchor) VELK_EXCLUDES(mMutex);
    // For the end of an anchor. Empty when a start has found the anchor invalid.
    std::optional<Targets> find(int anchor) VELK_EXCLUDES(mMutex);

    // The target in force now: that of the overriding property when it is set, else the one given.
    static int latencyInForce(int anchor, const Targets& targets);
    static int jitterInForce(int anchor, const Targets& targets);

  private:
    // Also logs that the anchor is invalid.
    bool isKnownInvalid(int anchor) const VELK_REQUIRES(mMutex);
    Targets targetsOf(int anchor) const VELK_REQUIRES(mMutex);

    std::unordered_map<int, Targets> mTargets VELK_GUARDED_BY(mMutex);
    std::unordered_set<int> mInvalid VELK_GUARDED_BY(mMutex);
    std::mutex mMutex;
};
