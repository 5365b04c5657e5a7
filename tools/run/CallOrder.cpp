#include "run/CallOrder.h"

#include <algorithm>
#include <utility>

namespace desk {

void CallOrder::add(LiveCall call) {
    // A call without commands is ordered after the last command that has arrived.
    const uint64_t place = call.commands.empty() ? mLast : call.commands.front().sequence;
    for (const NumberedCommand& command : call.commands) {
        mLast = std::max(mLast, command.sequence);
        mArrived.insert(command.sequence);
    }
    mWaiting.emplace(place, std::move(call));
    skipTo(mMissing);
}

std::optional<LiveCall> CallOrder::next() {
    return !mWaiting.empty() && mWaiting.begin()->first < mMissing ? nextArrived() : std::nullopt;
}

std::optional<LiveCall> CallOrder::nextArrived() {
    if (mWaiting.empty()) {
        return std::nullopt;
    }
    const auto first = mWaiting.begin();
    skipTo(std::max(mMissing, first->first));
    LiveCall call = std::move(first->second);
    mWaiting.erase(first);
    return call;
}

// Stops waiting for commands below `sequence`, and skips those from there on that have arrived.
void CallOrder::skipTo(uint64_t sequence) {
    mMissing = sequence;
    mArrived.erase(mArrived.begin(), mArrived.lower_bound(sequence));
    while (!mArrived.empty() && *mArrived.begin() == mMissing) {
        mArrived.erase(mArrived.begin());
        ++mMissing;
    }
}

}  // namespace desk
