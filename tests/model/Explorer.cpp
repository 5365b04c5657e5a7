#include "model/Explorer.h"

#include <algorithm>

namespace model {

namespace {

constexpr size_t kStackSize = 65536;

bool acquires(std::memory_order order) {
    return order != std::memory_order_relaxed && order != std::memory_order_release;
}

bool releases(std::memory_order order) {
    return order == std::memory_order_release || order == std::memory_order_acq_rel ||
           order == std::memory_order_seq_cst;
}

void join(View& view, const View& other) {
    for (size_t i = 0; i < view.size(); ++i) {
        view[i] = std::max(view[i], other[i]);
    }
}

}  // namespace

Explorer* Explorer::running = nullptr;

std::string Explorer::explore(const Scenario& scenario) {
    running = this;
    do {
        runOnce(scenario);
    } while (mFault.empty() && nextPath());
    running = nullptr;
    return mFault;
}

void Explorer::startThread() {
    running->forgetReads(1);
    running->current().action();
    running->forgetReads(0);
    running->current().view = {};
    running->current().isDone = true;
    running->yield();
}

void Explorer::runOnce(const Scenario& scenario) {
    mMemory.clear();
    mConsistent = {};
    mDepth = 0;
    mThreads.clear();
    for (std::function<void()>& action : scenario()) {
        auto thread = std::make_unique<Thread>();
        thread->action = std::move(action);
        thread->stack = std::make_unique_for_overwrite<char[]>(kStackSize);
        getcontext(&thread->context);
        thread->context.uc_stack.ss_sp = thread->stack.get();
        thread->context.uc_stack.ss_size = kStackSize;
        makecontext(&thread->context, startThread, 0);
        mThreads.push_back(std::move(thread));
    }
    while (mFault.empty()) {
        std::vector<size_t> ready;
        bool isOver = true;
        for (size_t i = 0; i < mThreads.size(); ++i) {
            isOver = isOver && mThreads[i]->isDone;
            if (!mThreads[i]->isDone && mThreads[i]->waitsFor == kMostLocations) {
                ready.push_back(i);
            }
        }
        if (ready.empty()) {
            if (!isOver) {
                fail("a thread waits for ever");
            }
            return;
        }
        // States on the path that is being repeated were new when they were first reached.
        if (mDepth == mPath.size() && !isNew()) {
            return;
        }
        mCurrent = ready[choose(ready.size())];
        swapcontext(&mScheduler, &current().context);
    }
}

bool Explorer::isNew() {
    std::string state;
    const auto add = [&state](const auto& value) {
        state.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (size_t location = 0; location < mMemory.size(); ++location) {
        const std::vector<Message>& messages = mMemory[location];
        add(messages.size());
        // Values that all threads' views have passed cannot be read any more.
        size_t oldest = messages.size() - 1;
        for (const auto& thread : mThreads) {
            if (!thread->isDone) {
                oldest = std::min(oldest, size_t{thread->view[location]});
            }
        }
        for (; oldest < messages.size(); ++oldest) {
            add(messages[oldest].value);
            add(messages[oldest].view);
        }
    }
    add(mConsistent);
    for (const auto& thread : mThreads) {
        add(thread->view);
        add(thread->waitsFor);
        add(thread->read.size());
        for (const int64_t value : thread->read) {
            add(value);
        }
    }
    return mSeen.insert(std::move(state)).second;
}

bool Explorer::nextPath() {
    while (!mPath.empty() && mPath.back().taken + 1 == mPath.back().options) {
        mPath.pop_back();
    }
    if (mPath.empty()) {
        return false;
    }
    ++mPath.back().taken;
    return true;
}

size_t Explorer::choose(size_t options) {
    if (mDepth == mPath.size()) {
        mPath.push_back({0, options});
    }
    return mPath[mDepth++].taken;
}

void Explorer::yield() {
    swapcontext(&current().context, &mScheduler);
}

void Explorer::forgetReads(int64_t step) {
    current().read.assign(1, step);
}

void Explorer::fail(const char* fault) {
    mFault = fault;
}

size_t Explorer::addLocation(int64_t value) {
    mMemory.push_back({{value, {}}});
    return mMemory.size() - 1;
}

int64_t Explorer::load(size_t location, std::memory_order order) {
    yield();
    const std::vector<Message>& messages = mMemory[location];
    View& view = current().view;
    const bool isConsistent = order == std::memory_order_seq_cst;
    const size_t oldest =
            isConsistent ? std::max(view[location], mConsistent[location]) : view[location];
    const size_t time = messages.size() - 1 - choose(messages.size() - oldest);
    view[location] = static_cast<uint8_t>(time);
    if (acquires(order)) {
        join(view, messages[time].view);
    }
    if (isConsistent) {
        mConsistent[location] = static_cast<uint8_t>(time);
    }
    current().read.push_back(messages[time].value);
    return messages[time].value;
}

// `inherited` is the view that a reader acquires from the value that this one replaces.
void Explorer::append(size_t location, int64_t value, std::memory_order order,
                      const View& inherited) {
    View& view = current().view;
    view[location] = static_cast<uint8_t>(mMemory[location].size());
    Message message = {value, inherited};
    message.view[location] = view[location];
    if (releases(order)) {
        join(message.view, view);
    }
    mMemory[location].push_back(message);
    if (order == std::memory_order_seq_cst) {
        mConsistent[location] = view[location];
    }
}

void Explorer::store(size_t location, int64_t value, std::memory_order order) {
    yield();
    append(location, value, order, {});
    current().read.push_back(0);
}

int64_t Explorer::modify(size_t location, const Operation& operation, std::memory_order order) {
    yield();
    const Message last = mMemory[location].back();
    if (acquires(order)) {
        join(current().view, last.view);
    }
    append(location, operation(last.value), order, last.view);
    current().read.push_back(last.value);
    return last.value;
}

void Explorer::wait(size_t location, int64_t old, std::memory_order order) {
    while (load(location, order) == old) {
        if (mMemory[location].back().value == old) {
            current().waitsFor = location;
            yield();
        } else {
            // A stored value becomes visible in finite time.
            current().view[location] = static_cast<uint8_t>(mMemory[location].size() - 1);
        }
    }
}

void Explorer::notify(size_t location) {
    yield();
    for (const auto& thread : mThreads) {
        if (thread->waitsFor == location) {
            thread->waitsFor = kMostLocations;
        }
    }
    current().read.push_back(0);
}

bool Explorer::isUpToDate(size_t location) {
    return size_t{current().view[location]} + 1 == mMemory[location].size();
}

void Explorer::readPlain(size_t location, size_t firstReader) {
    yield();
    if (!isUpToDate(location) || mMemory[location].back().value == 0) {
        fail("a call uses an object that is not there");
    }
    append(firstReader + mCurrent, 0, std::memory_order_relaxed, {});
    current().read.push_back(0);
}

void Explorer::writePlain(size_t location, size_t firstReader) {
    yield();
    bool isAlone = isUpToDate(location);
    for (size_t reader = 0; reader < mThreads.size(); ++reader) {
        isAlone = isAlone && isUpToDate(firstReader + reader);
    }
    if (!isAlone) {
        fail("an object changes while a call may use it");
    }
    append(location, 1 - mMemory[location].back().value, std::memory_order_relaxed, {});
    current().read.push_back(0);
}

}  // namespace model
