/*
 * Puts the calls of several threads, which arrive as they end, into the order in which the driver
 * received their commands.
 */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "live/CallFrame.h"

namespace desk {

class CallOrder {
  public:
    void add(LiveCall call);
    // The next call, once all commands ahead of its first one have arrived. None: there may be an
    // earlier call that is still under way.
    std::optional<LiveCall> next();
    // The next call of those that have arrived, whatever is under way.
    std::optional<LiveCall> nextArrived();
    bool isEmpty() const { return mWaiting.empty(); }

  private:
    void skipTo(uint64_t sequence);

    std::multimap<uint64_t, LiveCall> mWaiting;  // by the number of the first command
    std::set<uint64_t> mArrived;                 // beyond the first that is missing
    uint64_t mMissing = 1;                       // the first that has not arrived
    uint64_t mLast = 0;                          // the last that has arrived
};

}  // namespace desk
