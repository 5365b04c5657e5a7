/*
 * The calls of a live program: decodes the frames that it sends, and notifies the listeners.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "live/CallFrame.h"
#include "play/FailureJudge.h"
#include "play/PlayedCall.h"
#include "run/CallOrder.h"
#include "run/DriverFollower.h"
#include "session/LineReader.h"

namespace desk {

class LiveSession {
  public:
    explicit LiveSession(std::vector<CallListener*> listeners) : mListeners(std::move(listeners)) {}

    // Adds a call, and notifies the listeners of every call whose place in the order is certain.
    void take(std::string_view content);
    // Notifies of calls that have been held back long enough. Returns how long the oldest remaining
    // one may still wait for an earlier one, none when no call is held back.
    std::optional<std::chrono::milliseconds> advance();
    // Notifies of all calls that are held back.
    void finish();
    // There is nothing to be done for now.
    void wait();

    uint64_t calls() const { return mCalls; }
    uint64_t foreignCommands() const { return mForeignCommands; }
    DriverSnapshot snapshot() const { return mDriver.snapshot(); }

  private:
    using Clock = std::chrono::steady_clock;

    void tell(LiveCall& live);
    void takeSections(LiveCall& live);
    int64_t timeOf(const LiveCall& live);

    std::vector<CallListener*> mListeners;
    CallOrder mOrder;
    Clock::time_point mKeptSince;
    DriverFollower mDriver;
    FailureJudge mJudge;
    LineReader mLineReader;
    std::map<uint32_t, std::vector<TraceEvent>> mSections;  // by thread id, for later calls
    int64_t mLastUs = 0;
    uint64_t mCalls = 0;
    uint64_t mForeignCommands = 0;
};

}  // namespace desk
