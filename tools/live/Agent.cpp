/*
 * libvelklive.so: velk-run preloads it into a program. It sets up the desk as velk-run asks, and
 * sends every call to velk-run when the call has ended. What was sent is not lost, however the
 * program ends.
 */
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "clock/DeskClock.h"
#include "common/Logs.h"
#include "cutils/properties.h"
#include "driver/DriverModel.h"
#include "live/CallFrame.h"
#include "live/Connection.h"
#include "live/Setup.h"
#include "log/DeskLog.h"
#include "log/LogLine.h"
#include "record/CallObserver.h"
#include "record/NoCancellation.h"
#include "record/ThreadNames.h"
#include "session/SessionLine.h"
#include "text/PrintableText.h"
#include "tuning/TuningPlatform.h"

namespace desk {

namespace {

class Agent;

// The state of a thread that has made a call.
struct ThreadState {
    Agent* agent = nullptr;
    uint32_t number = 0;
    std::string name;
    bool isInCall = false;
    uint32_t commandCount = 0;
    FrameWriter commands{FrameKind::Call};
};

constinit thread_local ThreadState* tThread = nullptr;
constinit std::atomic<Agent*> gAgent = nullptr;
constinit std::atomic<int64_t> gStartNs = 0;

int64_t steadyNowNs() noexcept {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The clock of the desk counts from the first call.
int64_t liveNowNs() noexcept {
    return steadyNowNs() - gStartNs.load(std::memory_order_relaxed);
}

void putDeskInPlace(const Setup& setup) {
    TuningResult tuning = parseTuning(setup.tuning);
    installTuning(std::get<std::shared_ptr<const TuningData>>(std::move(tuning)));
    for (const auto& [name, value] : setup.properties) {
        property_set(name.c_str(), value.c_str());
    }
    controlNode().injectFaults(setup.faults);
}

class Agent final : public CallObserver {
  public:
    Agent(std::string socketName, pthread_key_t threadEnd)
        : mSocketName(socketName), mThreadEnd(threadEnd), mConnection(std::move(socketName)) {}

    bool isOn() const { return mIsOn.load(std::memory_order_relaxed); }
    // Turns the parent's agent off in a child process, and returns the child's own. Does not lock
    // the mutex: a thread that does not exist in the child may hold it.
    std::unique_ptr<Agent> leaveToParent() {
        mIsOn = false;
        mConnection.close();
        return std::make_unique<Agent>(mSocketName, mThreadEnd);
    }

    // Observes what the driver receives, whoever sends it.
    void watchDriver() { controlNode().setObserver(std::make_shared<Observer>(*this)); }

    void onCallBegin(const ObservedCall& /*call*/) noexcept override {
        tryTo([this] {
            if (!isReady()) {
                return;
            }
            ThreadState& thread = stateOfThread();
            clearProblem();
            thread.commands.start(FrameKind::Call);
            thread.commandCount = 0;
            thread.isInCall = true;
        });
    }

    void onFirstCommand(const ObservedCall& /*call*/) noexcept override {}

    void onCallEnd(const ObservedCall& call, const int* result,
                   bool /*hadCommand*/) noexcept override {
        const int64_t endNs = liveNowNs();
        if (!isOn() || tThread == nullptr || !std::exchange(tThread->isInCall, false)) {
            return;
        }
        tryTo([&] {
            LiveCall ended = callOf(*tThread);
            ended.endNs = endNs;
            ended.result = result != nullptr ? *result : -1;
            ended.problem = result != nullptr ? keptProblem()
                                              : "an exception left the call and the library";
            appendSessionLine(ended.line, 0, "", call.name(), call.arguments());
            sendCall(ended, tThread->commandCount, tThread->commands);
        });
    }

    void onForeignCommand() noexcept override {}

    void onMissingOperation(const char* name) noexcept override {
        if (!mIsMissingSaid.exchange(true)) {
            say(std::string(name) + " was not found in libvelkperfctrl.so.1");
        }
    }

    void onDriverEvent(const DriverEvent& event) noexcept {
        tryTo([&] {
            if (!isReady()) {
                return;
            }
            ThreadState& thread = stateOfThread();
            if (!thread.isInCall) {
                thread.commands.start(FrameKind::Call);
                putCommand(thread.commands, event);
                LiveCall none = callOf(thread);
                none.endNs = event.timeNs;
                sendCall(none, 1, thread.commands);
                return;
            }
            putCommand(thread.commands, event);
            ++thread.commandCount;
        });
    }

    void forget(const ThreadState& thread) noexcept {
        if (isOn()) {
            const std::lock_guard lock(mMutex);
            mNames.giveBack(thread.number);
        }
    }

  private:
    // Never destroyed, like the agent.
    class Observer : public DriverObserver {
      public:
        explicit Observer(Agent& agent) : mAgent(agent) {}
        void onDriverEvent(const DriverEvent& event) noexcept override {
            mAgent.onDriverEvent(event);
        }

      private:
        Agent& mAgent;
    };

    static void say(const std::string& message) noexcept {
        const NoCancellation held;
        dprintf(STDERR_FILENO, "velk-run: process %d: %s\n", getpid(), message.c_str());
    }

    // Any error ends the observation, never the program.
    template <typename Action>
    void tryTo(const Action& action) noexcept {
        const int callersErrno = errno;
        const NoCancellation held;
        try {
            action();
        } catch (const std::exception& error) {
            if (mIsOn.exchange(false)) {
                giveUp(error.what());
            }
        }
        errno = callersErrno;
    }

    // velk-run has to know that it does not see all. The connection may be what has failed, so it
    // is told on another one.
    void giveUp(const char* reason) noexcept {
        try {
            Connection another(mSocketName);
            if (readSetup(another.open()).isFollowed) {
                FrameWriter frame(FrameKind::Lost);
                frame.append(reason);
                another.send(frame.finish());
            }
            another.close();
        } catch (const std::exception&) {
            say(std::string("its further calls are not shown: ") + reason);
        }
    }

    // Connects before the first call. False when this process is not followed.
    bool isReady() {
        if (mIsSetUp.load(std::memory_order_acquire)) {
            return isOn();
        }
        const std::lock_guard lock(mMutex);
        if (!mIsSetUp && isOn()) {
            setUp();
            mIsSetUp.store(true, std::memory_order_release);
        }
        return isOn();
    }

    void setUp() {
        const Setup setup = readSetup(mConnection.open());
        putDeskInPlace(setup);
        if (!setup.isFollowed) {
            mConnection.close();
            mIsOn = false;
            return;
        }
        gStartNs = steadyNowNs();
        setClock(liveNowNs);
        mLogs = std::make_unique<Logs>(setup.hasLog ? sinkOf(FrameKind::Log) : nullptr,
                                       setup.hasUlog ? sinkOf(FrameKind::Ulog) : nullptr);
        mHasTrace = setup.hasTrace;
        setTracing(mHasTrace);
        watchDriver();
    }

    std::shared_ptr<LineSink> sinkOf(FrameKind kind) {
        return LineSink::toReceiver([this, kind](std::string_view line) {
            tryTo([&] {
                if (!isOn()) {
                    return;
                }
                const std::lock_guard lock(mMutex);
                mFrame.start(kind);
                mFrame.append(line);
                mConnection.send(mFrame.finish());
            });
        });
    }

    ThreadState& stateOfThread() {
        if (tThread != nullptr && tThread->agent == this) {
            return *tThread;
        }
        auto state = std::make_unique<ThreadState>();
        state->agent = this;
        std::array<char, 17> name = {};
        prctl(PR_GET_NAME, name.data());
        const std::string text = printableText(name.data());
        {
            const std::lock_guard lock(mMutex);
            const size_t place =
                    mNames.take(text.empty() ? "?" : text, std::numeric_limits<uint32_t>::max());
            state->number = static_cast<uint32_t>(place);
            state->name = mNames[place];
        }
        setLogThread(state->number + 1);
        pthread_setspecific(mThreadEnd, state.get());
        tThread = state.release();  // a state of the parent process is leaked
        return *tThread;
    }

    static LiveCall callOf(const ThreadState& thread) {
        LiveCall call;
        call.thread = thread.number;
        call.threadName = thread.name;
        call.tid = currentTid();
        return call;
    }

    void sendCall(LiveCall& call, uint32_t commandCount, const FrameWriter& commands) {
        const std::lock_guard lock(mMutex);
        if (mHasTrace) {
            drainTrace(call.sections);
        }
        mFrame.start(FrameKind::Call);
        putCall(mFrame, call, commandCount, commands.content());
        mConnection.send(mFrame.finish());
    }

    const std::string mSocketName;
    const pthread_key_t mThreadEnd;
    std::atomic<bool> mIsOn = true;
    std::atomic<bool> mIsSetUp = false;
    std::atomic<bool> mIsMissingSaid = false;
    std::unique_ptr<Logs> mLogs;
    std::atomic<bool> mHasTrace = false;
    std::mutex mMutex;  // guards all below
    Connection mConnection;
    FrameWriter mFrame{FrameKind::Call};
    ThreadNames mNames;
};

void forgetThread(void* state) {
    const std::unique_ptr<ThreadState> ended(static_cast<ThreadState*>(state));
    tThread = nullptr;
    ended->agent->forget(*ended);
}

// The child uses the library on its own, and asks whether it is to be followed.
void beginAnewInChild() {
    gAgent = gAgent.load()->leaveToParent().release();
}

// Null when the program was not started by velk-run. Never destroyed, because calls are possible
// until the end of the process.
Agent* makeAgent() {
    const char* const socketName = std::getenv(kSocketVariable);
    pthread_key_t threadEnd = 0;
    if (socketName == nullptr || pthread_key_create(&threadEnd, forgetThread) != 0) {
        return nullptr;
    }
    return std::make_unique<Agent>(socketName, threadEnd).release();
}

// Of a program that links the library statically, only the commands are seen.
[[gnu::constructor]] void beginAtLoading() {
    callObserver();
}

}  // namespace

CallObserver* callObserver() noexcept {
    static const bool isMade = [] {
        gAgent = makeAgent();
        if (Agent* const made = gAgent) {
            pthread_atfork(nullptr, nullptr, beginAnewInChild);
            made->watchDriver();
        }
        return true;
    }();
    static_cast<void>(isMade);
    Agent* const agent = gAgent;
    return agent != nullptr && agent->isOn() ? agent : nullptr;
}

}  // namespace desk
