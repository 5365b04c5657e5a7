/*
 * The calls of a live program: from the frames that it sends to those who listen.
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

    // Takes in a call, and tells of every call whose place is certain.
    void take(std::string_view content);
    // How long the oldest call that is kept back may still wait for an earlier one, none when there
    // is none. Calls that have waited long enough are told of.
    std::optional<std::chrono::milliseconds> advance();
    // Tells of all calls that are kept back.
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
    std::map<uint32_t, std::vector<TraceEvent>> mSections;  // by thread id, of calls to come
    int64_t mLastUs = 0;
    uint64_t mCalls = 0;
    uint64_t mForeignCommands = 0;
};

}  // namespace desk
