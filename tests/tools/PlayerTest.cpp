/*
 * The order of calls, the threads that make them, and how playing ends.
 */
#include "play/Player.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TuningTexts.h"
#include "driver/DriverModel.h"
#include "tuning/TuningPlatform.h"

namespace desk {
namespace {

struct RecordedCall {
    uint64_t line = 0;
    std::string thread;
    pid_t tid = 0;

    bool operator==(const RecordedCall&) const = default;
};

class CallRecorder : public CallListener {
  public:
    void onCall(const PlayedCall& played) override {
        calls.push_back({played.call->line, std::string(played.thread), gettid()});
        for (const ReceivedCommand& command : played.commands) {
            EXPECT_EQ(command.tid, static_cast<uint32_t>(gettid()));
        }
        results.push_back(played.result);
        EXPECT_EQ(played.startNs, played.call->atUs * 1000);
        EXPECT_GE(played.endNs, played.startNs);
        if (onLine && played.call->line == *onLine) {
            act();
        }
    }

    std::vector<RecordedCall> calls;
    std::vector<int> results;
    std::optional<uint64_t> onLine;
    std::function<void()> act;
};

class PlayerTest : public testing::Test {
  protected:
    PlayerTest() {
        installTuning(std::get<std::shared_ptr<const TuningData>>(parseTuning(smallTuning())));
    }
    ~PlayerTest() override { controlNode().reset(); }

    // A block of so many vsyncs on threads that change from call to call without a pattern.
    SessionBlock makeBlock(size_t calls) {
        SessionBlock block;
        for (size_t i = 0; i < calls; ++i) {
            mRandom = mRandom * 1103515245 + 12345;
            const uint32_t thread = (mRandom >> 16) % (mThreads + (mThreads < 5 ? 1 : 0));
            if (thread == mThreads) {
                block.newThreads.push_back("thread " + std::to_string(mThreads++));
            }
            block.calls.push_back(
                    {++mLine, 0, mAtUs += mStepUs, thread, findCall("notifyVSync"), {}});
        }
        return block;
    }

    static SessionBlock lastBlock() {
        SessionBlock block;
        block.isLast = true;
        return block;
    }

    uint32_t mRandom = 1;
    uint32_t mThreads = 0;
    uint64_t mLine = 0;
    int64_t mAtUs = 0;
    int64_t mStepUs = 1;
    BlockQueue mQueue;
    CallRecorder mRecorder;
};

TEST_F(PlayerTest, CallsComeInTheOrderOfTheFileOnOneThreadForEachName) {
    std::thread reader([this] {
        for (int block = 0; block < 20; ++block) {
            EXPECT_TRUE(mQueue.push(makeBlock(50)));
        }
        mQueue.push(lastBlock());
    });
    Player player(mQueue, std::nullopt, {&mRecorder});
    const PlayResult result = player.play();
    reader.join();

    EXPECT_FALSE(result.isStopped);
    EXPECT_FALSE(result.error);
    ASSERT_EQ(mRecorder.calls.size(), 1000U);
    std::map<std::string, pid_t> tids;
    for (uint64_t line = 1; line <= 1000; ++line) {
        const RecordedCall& call = mRecorder.calls[line - 1];
        ASSERT_EQ(call, (RecordedCall{line, call.thread,
                                      tids.try_emplace(call.thread, call.tid).first->second}));
    }
    EXPECT_EQ(tids.size(), 5U);
    std::set<pid_t> distinct = {gettid()};
    for (const auto& [name, tid] : tids) {
        EXPECT_TRUE(distinct.insert(tid).second) << name;
    }
}

TEST_F(PlayerTest, WithASpeedNoCallComesBeforeItsTime) {
    mStepUs = 2000;
    mQueue.push(makeBlock(11));
    mQueue.push(lastBlock());
    Player player(mQueue, 2.0, {&mRecorder});
    const auto start = std::chrono::steady_clock::now();
    player.play();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(10));
    EXPECT_EQ(mRecorder.calls.size(), 11U);
}

TEST_F(PlayerTest, AStopEndsAfterTheCallThatIsUnderWay) {
    mQueue.push(makeBlock(100));
    Player player(mQueue, std::nullopt, {&mRecorder});
    mRecorder.onLine = 40;
    mRecorder.act = [&player] { player.stop(); };
    EXPECT_TRUE(player.play().isStopped);
    EXPECT_EQ(mRecorder.calls.size(), 40U);
    EXPECT_FALSE(mQueue.push(makeBlock(1)));
}

TEST_F(PlayerTest, AStopEndsTheWaitForTheTimeOfACall) {
    mQueue.push(makeBlock(2));
    constexpr double kBeyondEveryClock = 1e-300;
    Player player(mQueue, kBeyondEveryClock, {&mRecorder});
    mRecorder.onLine = 1;
    std::thread stopper;
    mRecorder.act = [&] { stopper = std::thread([&player] { player.stop(); }); };
    EXPECT_TRUE(player.play().isStopped);
    stopper.join();
    EXPECT_EQ(mRecorder.calls.size(), 1U);
}

TEST_F(PlayerTest, WhatAListenerThrowsComesOutOfPlay) {
    mQueue.push(makeBlock(100));
    Player player(mQueue, std::nullopt, {&mRecorder});
    mRecorder.onLine = 30;
    mRecorder.act = [] { throw std::runtime_error("disk full"); };
    EXPECT_THROW(player.play(), std::runtime_error);
    EXPECT_EQ(mRecorder.calls.size(), 30U);
}

TEST_F(PlayerTest, ThePlayedPartOfABrokenSessionComesWithItsError) {
    SessionBlock block = makeBlock(3);
    block.isLast = true;
    block.error = "s:4: task: missing";
    mQueue.push(std::move(block));
    Player player(mQueue, std::nullopt, {&mRecorder});
    EXPECT_EQ(player.play().error, "s:4: task: missing");
    EXPECT_EQ(mRecorder.calls.size(), 3U);
    EXPECT_EQ(mRecorder.results, (std::vector<int>{-1, -1, -1}));  // the library is down
}

TEST(FailureJudge, KnowsWhatFollowsFromARefusedNode) {
    FailureJudge judge;
    const auto after = [&judge](DriverCall driverCall, Verdict verdict, const char* call) {
        ReceivedCommand command;
        command.call = driverCall;
        command.verdict = verdict;
        return judge.isFailureInjected(call, {&command, 1});
    };
    const char* const mark = "markCriticalTask";
    EXPECT_FALSE(judge.isFailureInjected(mark, {}));
    EXPECT_TRUE(after(DriverCall::Open, Verdict::InjectedRefusal, mark));
    EXPECT_TRUE(judge.isFailureInjected(mark, {}));
    EXPECT_FALSE(after(DriverCall::Open, Verdict::Accepted, mark));
    EXPECT_FALSE(judge.isFailureInjected(mark, {}));
    EXPECT_TRUE(after(DriverCall::Command, Verdict::InjectedRefusal, mark));
    EXPECT_FALSE(after(DriverCall::Command, Verdict::Refused, mark));
    EXPECT_FALSE(judge.isFailureInjected(mark, {}));
    // A second descriptor is refused, and the first one is still there.
    EXPECT_TRUE(after(DriverCall::Open, Verdict::InjectedRefusal, mark));
    EXPECT_FALSE(judge.isFailureInjected(mark, {}));
    EXPECT_TRUE(after(DriverCall::Close, Verdict::Accepted, mark));
    // A refused init leaves the library down, whatever else is open.
    EXPECT_TRUE(after(DriverCall::Open, Verdict::InjectedRefusal, "init"));
    EXPECT_TRUE(after(DriverCall::Open, Verdict::Accepted, mark));
    EXPECT_TRUE(judge.isFailureInjected("notifyVSync", {}));
    EXPECT_FALSE(judge.isFailureInjected("init", {}));
    EXPECT_FALSE(judge.isFailureInjected("notifyVSync", {}));
}

}  // namespace
}  // namespace desk
