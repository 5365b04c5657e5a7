/*
 * The unique task ids: one for each pair of caller key and task enum, handed out in the order 1, 2,
 * 3, ... and never twice.
 *
 * In dump mode, which a property switches on, every new id rewrites a text file of ids and names.
 */
#pragma once

#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "foundation/ThreadSafety.h"
#include "foundation/Visibility.h"
#include "resource/StaticData.h"
#include "resource/TaskPair.h"

class VELK_INTERNAL TaskIdTable {
  public:
    // `staticData`: where the dump gets the names of tasks from.
    explicit TaskIdTable(const StaticData& staticData) : mStaticData(staticData) {}

    // The id of the pair, a new one when the pair is unknown. Then it sets `isNew`, which it leaves
    // alone otherwise. Inline, because the entry operations look up an id on every frame.
    unsigned idOf(const void* key, int task, bool& isNew) VELK_EXCLUDES(mMutex) {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto known = mIds.find({reinterpret_cast<intptr_t>(key), task});
        if (known != mIds.end()) {
            return known->second;
        }
        isNew = true;
        return add(key, task);
    }

    // Forgets the pair. Its id is not handed out again. No effect on an unknown pair.
    void forget(const void* key, int task) VELK_EXCLUDES(mMutex);

    // Rewrites the dump file.
    [[gnu::cold]] void dump() const VELK_REQUIRES(mMutex);

  private:
    unsigned add(const void* key, int task) VELK_REQUIRES(mMutex);

    const StaticData& mStaticData;
    std::unordered_map<TaskPair, uint32_t, TaskPairHash> mIds VELK_GUARDED_BY(mMutex);
    // Unique task id -> task enum, filled in dump mode only.
    std::unordered_map<uint32_t, int> mDumpedTasks VELK_GUARDED_BY(mMutex);
    uint32_t mNextId VELK_GUARDED_BY(mMutex) = 1;
    std::mutex mMutex;
};
