#include "driver/DriverModel.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "clock/DeskClock.h"
#include "driver/DriverSession.h"
#include "driver/DriverTotals.h"
#include "driver/OpenDescriptors.h"
#include "driver/RecordCheck.h"

namespace desk {

namespace {

// The errno of the next refusal, which is then used up; 0 when none is left.
int takeRefusal(InjectedFaults::Refusal& refusal) {
    if (refusal.error == 0 || refusal.times == 0) {
        return 0;
    }
    if (refusal.times != InjectedFaults::kAlways) {
        --refusal.times;
    }
    return refusal.error;
}

void note(DriverEvent& event, const char* finding) {
    event.verdict = Verdict::Noted;
    event.finding = finding;
}

void refuse(DriverEvent& event, int error, std::string finding) {
    event.verdict = Verdict::Refused;
    event.error = error;
    event.finding = std::move(finding);
}

void injectRefusal(DriverEvent& event, int error) {
    event.verdict = Verdict::InjectedRefusal;
    event.error = error;
}

size_t indexOf(const VELKCommand& command) {
    return static_cast<size_t>(&command - VELK_COMMANDS.data());
}

}  // namespace

struct DriverModel::State {
    mutable std::mutex mutex;
    std::atomic<bool> isSlow = false;
    InjectedFaults faults;
    std::shared_ptr<DriverObserver> observer;
    OpenDescriptors descriptors;
    uint64_t lastSequence = 0;
    DriverSession session;
    DriverSnapshot totals;  // its counters and findings; the rest is not used

    // Closes the descriptor when its file has others. False when it has none.
    bool closeDuplicate(int descriptor) {
        const std::lock_guard lock(mutex);
        return descriptors.isDuplicate(descriptor) && descriptors.remove(descriptor);
    }
    void judgeCommand(DriverEvent& event);
    void judgeKnownCommand(DriverEvent& event);
    // `judge(event)` decides about the call and carries it out. Returns the answer to the caller.
    template <typename Judge>
    int handle(DriverEvent& event, CallCounters& counters, Judge&& judge);
    void injectDelay(const VELKCommand& command) const;
};

template <typename Judge>
int DriverModel::State::handle(DriverEvent& event, CallCounters& counters, Judge&& judge) {
    std::shared_ptr<DriverObserver> notified;
    {
        const std::lock_guard lock(mutex);
        event.sequence = ++lastSequence;
        event.timeNs = nowNs();
        judge(event);
        count(counters, event.verdict);
        countFinding(totals.findings, event.finding);
        notified = observer;
    }
    if (notified != nullptr) {
        notified->onDriverEvent(event);
    }
    return -event.error;
}

void DriverModel::State::judgeCommand(DriverEvent& event) {
    if (!descriptors.contains(event.descriptor)) {
        refuse(event, EBADF, "a command on a descriptor that is not open");
    } else if (event.command == nullptr) {
        refuse(event, ENOTTY, "a request of no known command");
    } else if (event.record == nullptr) {
        refuse(event, EFAULT, "a command without a record");
    } else {
        judgeKnownCommand(event);
        if (canChangeControl(event.request)) {
            event.control = session.control();
        }
    }
}

void DriverModel::State::judgeKnownCommand(DriverEvent& event) {
    std::string fault = findRecordFault(*event.command, event.record, event.tid);
    if (!fault.empty()) {
        refuse(event, EINVAL, std::move(fault));
        session.refuse(event.request, event.record, false);
        return;
    }
    const DriverSession::Finding finding = session.inspect(event.request, event.record);
    if (finding.isFault) {
        refuse(event, EINVAL, finding.text);
        return;
    }
    if (const int error = takeRefusal(faults.commands[indexOf(*event.command)])) {
        injectRefusal(event, error);
        session.refuse(event.request, event.record, true);
        return;
    }
    session.accept(event.request, event.record);
    if (*finding.text != '\0') {
        note(event, finding.text);
    }
}

void DriverModel::State::injectDelay(const VELKCommand& command) const {
    std::chrono::microseconds delay = {};
    {
        const std::lock_guard lock(mutex);
        delay = faults.delays[indexOf(command)];
    }
    std::this_thread::sleep_for(delay);
}

DriverModel::DriverModel() : mState(std::make_unique<State>()) {}
DriverModel::~DriverModel() = default;

int DriverModel::open(int descriptor, uint32_t tid) {
    DriverEvent event;
    event.call = DriverCall::Open;
    event.tid = tid;
    State& state = *mState;
    return state.handle(event, state.totals.opens, [&state, descriptor](DriverEvent& open) {
        if (const int error = takeRefusal(state.faults.open)) {
            injectRefusal(open, error);
            return;
        }
        open.descriptor = descriptor;
        if (state.descriptors.remove(descriptor)) {
            note(open, "the descriptor was open already");
        }
        state.descriptors.add(descriptor);
    });
}

int DriverModel::command(int descriptor, uint32_t request, const void* record, uint32_t tid) {
    State& state = *mState;
    DriverEvent event;
    event.call = DriverCall::Command;
    event.tid = tid;
    event.descriptor = descriptor;
    event.request = request;
    event.record = record;
    CallCounters* counters = &state.totals.otherRequests;
    if (const VELKCommand* known = findVELKCommand(request)) {
        event.command = known;
        event.recordSize = known->recordSize;
        counters = &state.totals.commands[indexOf(*known)];
        if (state.isSlow.load(std::memory_order_relaxed)) {
            state.injectDelay(*known);
        }
    }
    return state.handle(event, *counters, [&state](DriverEvent& e) { state.judgeCommand(e); });
}

int DriverModel::duplicate(int descriptor, int copy) {
    const std::lock_guard lock(mState->mutex);
    return mState->descriptors.addDuplicate(descriptor, copy) ? 0 : -EBADF;
}

int DriverModel::close(int descriptor, uint32_t tid) {
    State& state = *mState;
    if (state.closeDuplicate(descriptor)) {
        return 0;
    }
    DriverEvent event;
    event.call = DriverCall::Close;
    event.tid = tid;
    event.descriptor = descriptor;
    return state.handle(event, state.totals.closes, [&state](DriverEvent& close) {
        if (!state.descriptors.remove(close.descriptor)) {
            refuse(close, EBADF, "a close of a descriptor that is not open");
        }
    });
}

void DriverModel::injectFaults(const InjectedFaults& faults) {
    const std::lock_guard lock(mState->mutex);
    mState->faults = faults;
    mState->isSlow =
            std::ranges::any_of(faults.delays, [](auto delay) { return delay.count() > 0; });
}

void DriverModel::setObserver(std::shared_ptr<DriverObserver> observer) {
    // The former observer is destroyed after the lock is released, because that may take long.
    const std::lock_guard lock(mState->mutex);
    mState->observer.swap(observer);
}

DriverSnapshot DriverModel::snapshot() const {
    const std::lock_guard lock(mState->mutex);
    DriverSnapshot snapshot = mState->totals;
    snapshot.openDescriptors = mState->descriptors.size();
    mState->session.fill(snapshot);
    return snapshot;
}

void DriverModel::reset() {
    const std::lock_guard lock(mState->mutex);
    mState->session = {};
    mState->totals = {};
    mState->lastSequence = 0;
    mState->faults = {};
    mState->isSlow = false;
}

void DriverModel::prepareFork() {
    mState->mutex.lock();
}

void DriverModel::finishForkInParent() {
    mState->mutex.unlock();
}

void DriverModel::finishForkInChild() {
    mState->session = {};
    mState->totals = {};
    mState->lastSequence = 0;
    // Never destroyed: what it refers to may be in use by threads that the child does not have.
    new std::shared_ptr<DriverObserver>(std::move(mState->observer));
    mState->mutex.unlock();
}

DriverModel& controlNode() {
    static DriverModel& instance = []() -> DriverModel& {
        auto* const model = new DriverModel;
        pthread_atfork([] { controlNode().prepareFork(); },
                       [] { controlNode().finishForkInParent(); },
                       [] { controlNode().finishForkInChild(); });
        return *model;
    }();
    return instance;
}

}  // namespace desk
