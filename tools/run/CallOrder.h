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
    // The next call, once all commands before its first one have arrived. None while an earlier
    // call may still be in progress.
    std::optional<LiveCall> next();
    // The earliest call that has arrived, even if an earlier one may be in progress.
    std::optional<LiveCall> nextArrived();
    bool isEmpty() const { return mWaiting.empty(); }

  private:
    void skipTo(uint64_t sequence);

    std::multimap<uint64_t, LiveCall> mWaiting;  // by the number of the first command
    std::set<uint64_t> mArrived;                 // commands after the first missing one
    uint64_t mMissing = 1;                       // the first command that has not arrived
    uint64_t mLast = 0;                          // the last command that has arrived
};

}  // namespace desk
