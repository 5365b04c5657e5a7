/*
 * Keeps values that the driver refused until a later attempt succeeds: for each key the first one.
 */
#pragma once

#include <cstddef>
#include <mutex>
#include <unordered_map>

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"
#include "foundation/LogGate.h"
#include "foundation/Rollback.h"
#include "foundation/ThreadSafety.h"

// Every operation may be called from any thread and holds the list's own lock for its whole run.
template <typename Key, typename Value>
class ErrorHandle {
  public:
    // Keeps a copy of the value unless the key has one already. Warns when the list is long; the
    // list has no upper bound.
    void addToErrorList(const Key& key, const Value& value) {
        const std::lock_guard<std::mutex> lock(mLock);
        const auto [residual, inserted] = mResiduals.try_emplace(key, value);
        // When the warning throws, the call has to leave nothing behind.
        Rollback forget([this, position = residual, isNew = inserted]()
                                VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
                                    if (isNew) {
                                        mResiduals.erase(position);
                                    }
                                });
        const auto count = static_cast<unsigned long>(mResiduals.size());
        if (count >= kWarnFrom) {
            VELK_LOGW("too many Error, error number: %lu", count);
        }
        forget.dismiss();
    }

    // Whether a value is kept under the key.
    bool isInErrorList(const Key& key) {
        const std::lock_guard<std::mutex> lock(mLock);
        return !mResiduals.empty() && mResiduals.find(key) != mResiduals.end();
    }

    // Copies the value that is kept under the key. False, with `value` untouched, when there is
    // none.
    bool getResidual(const Key& key, Value& value) {
        const std::lock_guard<std::mutex> lock(mLock);
        const auto residual = mResiduals.find(key);
        if (residual == mResiduals.end()) {
            return false;
        }
        value = residual->second;
        return true;
    }

    // Removes the value that is kept under the key, if any.
    void removeFromErrorList(const Key& key) {
        const std::lock_guard<std::mutex> lock(mLock);
        mResiduals.erase(key);
    }

  private:
    static constexpr unsigned long kWarnFrom = 6;

    std::unordered_map<Key, Value> mResiduals VELK_GUARDED_BY(mLock);
    std::mutex mLock;
};

// The list of refused task registrations. Exported, so that other modules link to this one.
extern template class __attribute__((visibility("default")))
ErrorHandle<unsigned, VELK_TASK_INIT_PARAM>;
