#include "play/Player.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "driver/DriverModel.h"
#include "log/DeskLog.h"
#include "log/LogLine.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

/*
 * One thread plays at a time, and waking the next one is far cheaper when both share a CPU: no idle
 * CPU has to be woken. The reader keeps the other CPUs.
 */
std::optional<size_t> chooseSharedCpu() {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) < 2) {
        return std::nullopt;
    }
    size_t cpu = CPU_SETSIZE - 1;
    while (!CPU_ISSET(cpu, &allowed)) {
        --cpu;
    }
    return cpu;
}

void moveToCpu(size_t cpu) {
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(cpu, &only);
    // Best effort: without it the session plays all the same, only slower.
    static_cast<void>(pthread_setaffinity_np(pthread_self(), sizeof only, &only));
}

}  // namespace

struct Player::Worker {
    std::string name;
    uint32_t number = 0;
    Semaphore isNext;
    std::thread thread;
};

Player::Player(BlockQueue& queue, std::optional<double> speed, std::vector<CallListener*> listeners)
    : mQueue(&queue),
      mSpeed(speed),
      mListeners(std::move(listeners)),
      mCpu(speed ? std::nullopt : chooseSharedCpu()),
      mCollector(std::make_shared<CommandCollector>()) {
    controlNode().setObserver(mCollector);
}

Player::~Player() {
    controlNode().setObserver(nullptr);
}

PlayResult Player::play() {
    try {
        wakeNext();
    } catch (...) {
        mException = std::current_exception();
        finish();
    }
    mFinished.wait();
    for (const auto& worker : mWorkers) {
        worker->thread.join();
    }
    if (mException != nullptr) {
        std::rethrow_exception(mException);
    }
    return std::move(mResult);
}

void Player::stop() {
    const std::lock_guard lock(mStopMutex);
    mIsStopping = true;
    mStopped.notify_all();
    mQueue->close();
}

void Player::work(Worker& self) {
    constexpr size_t kMaxThreadName = 15;
    pthread_setname_np(pthread_self(), std::string(cutToBytes(self.name, kMaxThreadName)).c_str());
    setLogThread(self.number + 1);
    if (mCpu) {
        moveToCpu(*mCpu);
    }
    self.isNext.wait();
    while (!mIsFinished) {
        try {
            playWhileMine(self);
            wakeNext();
        } catch (...) {
            mException = std::current_exception();
            finish();
        }
        self.isNext.wait();
    }
}

void Player::playWhileMine(const Worker& self) {
    for (const SessionCall* call = nextCall(); call != nullptr && call->thread == self.number;
         call = nextCall()) {
        waitForTimeOf(*call);
        if (mIsStopping.load(std::memory_order_relaxed)) {
            return;
        }
        playCall(self, *call);
        ++mNextCall;
    }
}

void Player::playCall(const Worker& self, const SessionCall& call) {
    PlayedCall played;
    played.call = &call;
    played.thread = self.name;
    mCollector->clear();
    clearProblem();
    played.startNs = SessionClock::beginCall(call.atUs);
    played.result = call.info->run(call.arguments);
    played.endNs = SessionClock::endCall();
    played.problem = keptProblem();
    played.commands = mCollector->commands();
    played.isFailureInjected =
            mJudge.isFailureInjected(call.info->name, played.commands) && played.result != 0;
    for (CallListener* listener : mListeners) {
        listener->onCall(played);
    }
}

void Player::wakeNext() {
    if (const SessionCall* call = nextCall()) {
        mWorkers[call->thread]->isNext.post();
    } else {
        finish();
    }
}

void Player::finish() {
    mIsFinished = true;
    for (const auto& worker : mWorkers) {
        worker->isNext.post();
    }
    mFinished.post();
}

const SessionCall* Player::nextCall() {
    while (mNextCall == mBlock.calls.size() && !mBlock.isLast) {
        if (mQueue->isEmpty()) {
            announceWait();
        }
        std::optional<SessionBlock> block = mQueue->pop();
        if (!block) {
            break;
        }
        mBlock = std::move(*block);
        mNextCall = 0;
        mResult.error = std::move(mBlock.error);
        mResult.cutOff = std::move(mBlock.cutOff);
        addThreads(std::move(mBlock.newThreads));
    }
    if (mIsStopping.load(std::memory_order_relaxed)) {
        mResult.isStopped = true;
        mResult.error.reset();  // they come after calls that are not played
        mResult.cutOff.reset();
        return nullptr;
    }
    return mNextCall < mBlock.calls.size() ? &mBlock.calls[mNextCall] : nullptr;
}

void Player::addThreads(std::vector<std::string> names) {
    for (std::string& name : names) {
        auto worker = std::make_unique<Worker>();
        worker->name = std::move(name);
        worker->number = static_cast<uint32_t>(mWorkers.size());
        Worker& self = *worker;
        worker->thread = std::thread([this, &self] { work(self); });
        mWorkers.push_back(std::move(worker));
    }
}

void Player::waitForTimeOf(const SessionCall& call) {
    if (!mSpeed) {
        return;
    }
    using std::chrono::steady_clock;
    using FloatMicroseconds = std::chrono::duration<double, std::micro>;
    constexpr FloatMicroseconds kForEver = std::chrono::years(100);  // fits the clock's type
    if (!mStart) {
        mStart = steady_clock::now();
        mFirstUs = call.atUs;
    }
    const FloatMicroseconds sinceFirst(static_cast<double>(call.atUs - mFirstUs) / *mSpeed);
    const auto due = *mStart + std::chrono::duration_cast<steady_clock::duration>(
                                       std::min(sinceFirst, kForEver));
    if (due <= steady_clock::now()) {
        return;
    }
    announceWait();
    std::unique_lock lock(mStopMutex);
    mStopped.wait_until(lock, due, [this] { return mIsStopping.load(); });
}

void Player::announceWait() {
    for (CallListener* listener : mListeners) {
        listener->onWait();
    }
}

}  // namespace desk
