/*
 * Plays a session through the library: a real thread for every thread of the session, and the
 * calls one at a time, in the order of the file.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "play/CommandCollector.h"
#include "play/FailureJudge.h"
#include "play/PlayResult.h"
#include "play/PlayedCall.h"
#include "play/Semaphore.h"
#include "play/SessionClock.h"
#include "session/BlockQueue.h"

namespace desk {

class Player {
  public:
    // Without a speed calls do not wait; speed 1 keeps the recorded time and 2 takes half of it.
    Player(BlockQueue& queue, std::optional<double> speed, std::vector<CallListener*> listeners);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Plays to the end of the session. Throws what a listener throws.
    PlayResult play();
    // Ends play() after the call that is under way. Any thread.
    void stop();

  private:
    struct Worker;

    // Everything below but stop and its guards belongs to the one thread that is playing.
    void work(Worker& self);
    void playWhileMine(const Worker& self);
    void playCall(const Worker& self, const SessionCall& call);
    void wakeNext();
    void finish();
    // The call to be played next, of the next block if need be. Null at the end.
    const SessionCall* nextCall();
    void addThreads(std::vector<std::string> names);
    void waitForTimeOf(const SessionCall& call);
    void announceWait();

    BlockQueue* mQueue;
    std::optional<double> mSpeed;
    std::vector<CallListener*> mListeners;
    std::optional<size_t> mCpu;  // that all threads share
    std::shared_ptr<CommandCollector> mCollector;
    FailureJudge mJudge;
    SessionClock mClock;

    SessionBlock mBlock;
    size_t mNextCall = 0;
    std::vector<std::unique_ptr<Worker>> mWorkers;
    std::optional<std::chrono::steady_clock::time_point> mStart;  // of the first call
    int64_t mFirstUs = 0;                                         // when that was recorded
    PlayResult mResult;
    std::exception_ptr mException;
    bool mIsFinished = false;
    Semaphore mFinished;

    std::atomic<bool> mIsStopping = false;
    std::mutex mStopMutex;
    std::condition_variable mStopped;
};

}  // namespace desk
