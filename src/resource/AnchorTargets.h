/*
 * The targets of an anchor as they are in force now: what the tuning data sets, unless a debugging
 * property overrides it. The tuning data of an anchor never changes while the library is up, the
 * properties may change between two calls.
 */
#pragma once

#include <array>

#include "foundation/Visibility.h"

// `spec` is what the tuning data sets for the anchor: {latency target, jitter target}.
VELK_INTERNAL int getLatencySpec(int anchor, const std::array<int, 2>& spec);
VELK_INTERNAL int getJitterSpec(int anchor, const std::array<int, 2>& spec);
