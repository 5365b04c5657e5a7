/*
 * A key of the tables of tasks: a task enum together with the value of the caller's key, or with
 * the index of a group.
 */
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/Visibility.h"

struct VELK_INTERNAL TaskPair {
    int64_t key;
    int32_t task;
    bool operator==(const TaskPair&) const = default;
};

struct VELK_INTERNAL TaskPairHash {
    // Keys are addresses, often at regular distances that share a factor with the number of
    // buckets. The upper half of the product does not show that pattern any more. Not noexcept: the
    // table then stores each hash instead of computing it again while it walks a bucket.
    size_t operator()(const TaskPair& pair) const {
        const auto key = static_cast<uint64_t>(pair.key);
        const auto task = static_cast<uint64_t>(pair.task) << 32U;
        return static_cast<size_t>(((key + task) * 0x9E3779B97F4A7C15U) >> 32U);
    }
};
