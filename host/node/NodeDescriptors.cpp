#include "node/NodeDescriptors.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <new>
#include <string_view>

#include "clock/DeskClock.h"
#include "driver/DriverModel.h"
#include "node/KernelNode.h"
#include "node/RealCalls.h"
#include "node/SafeCopy.h"

namespace desk {

namespace {

enum class NodeState : uint8_t {
    Foreign,  // has nothing to do with the node
    Open,
    Closed,  // was the node's, and nobody has been seen to use the number since
};

/*
 * The node is opened at numbers above those that the kernel hands out by itself, and a number comes
 * up again only after all others. So a stale number is told from a new one. The numbers end where
 * the descriptor table is made to reach before the process has threads: growing it later stops the
 * caller for milliseconds.
 */
constexpr int kFirstDescriptor = 256;
constexpr int kEndOfDescriptors = 1024;

// The kernel's own default limit. Only the pages of numbers in use take memory.
constexpr size_t kNumbers = size_t{1} << 20;
constinit std::array<std::atomic<NodeState>, kNumbers> gStates = {};
constinit std::atomic<int> gNextDescriptor = kFirstDescriptor;
constinit std::atomic<unsigned> gHighest = 0;  // that ever stood for the node
constinit std::atomic<pid_t> gProcess = 0;     // whose descriptors these are

NodeState stateOf(int descriptor) {
    const auto index = static_cast<size_t>(descriptor);
    return index < kNumbers ? gStates[index].load(std::memory_order_acquire) : NodeState::Foreign;
}

void setState(int descriptor, NodeState state) {
    gStates[static_cast<size_t>(descriptor)].store(state, std::memory_order_release);
}

void setOpen(int descriptor) {
    const auto number = static_cast<unsigned>(descriptor);
    unsigned highest = gHighest.load();
    while (highest < number && !gHighest.compare_exchange_weak(highest, number)) {
    }
    setState(descriptor, NodeState::Open);
}

class KeepErrno {
  public:
    KeepErrno() = default;
    ~KeepErrno() { errno = mErrno; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

  private:
    int mErrno = errno;
};

// False in a child that was made without the handlers of fork.
bool isOwnProcess() {
    return gProcess.load(std::memory_order_relaxed) == getpid();
}

bool isOpen(int descriptor) {
    return real::fcntl(descriptor, F_GETFD, nullptr) >= 0;
}

// Somebody may have closed and taken the number by system calls that nobody has seen.
bool isStandIn(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && isBehindNode(status);
}

// As a system call: errno on failure, untouched otherwise.
int answer(int reply, int callersErrno) {
    errno = reply < 0 ? -reply : callersErrno;
    return reply < 0 ? -1 : reply;
}

// Runs a call of the model, which may have to allocate.
template <typename Call>
int ask(Call&& call) noexcept {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return -ENOMEM;
    }
}

int tellClosed(int descriptor) {
    return ask([=] { return controlNode().close(descriptor, currentTid()); });
}

int duplicateFrom(int descriptor, int first, int flags) {
    const int command = (flags & O_CLOEXEC) != 0 ? F_DUPFD_CLOEXEC : F_DUPFD;
    // The C library passes a number in the place of the pointer.
    return real::fcntl(descriptor, command, reinterpret_cast<void*>(intptr_t{first}));
}

// The descriptor, moved to `first` or above; -1 when there is no room below the end.
int moveUp(int low, int first, int flags) {
    const int high = duplicateFrom(low, first, flags);
    if (high >= kEndOfDescriptors) {
        real::close(high);
        return -1;
    }
    return high;
}

// A real descriptor that stands for the node, or -1 with errno.
int makeDescriptor(int flags) {
    const int low = real::openat(AT_FDCWD, pathBehindNode(), flags, 0);
    if (low < 0) {
        return -1;
    }
    int high = moveUp(low, gNextDescriptor.load(std::memory_order_relaxed), flags);
    if (high < 0) {
        // The numbers are used up: begin again.
        gNextDescriptor.store(kFirstDescriptor, std::memory_order_relaxed);
        high = moveUp(low, kFirstDescriptor, flags);
    }
    if (high < 0) {
        return low;
    }
    real::close(low);
    int next = gNextDescriptor.load(std::memory_order_relaxed);
    while (next <= high && !gNextDescriptor.compare_exchange_weak(next, high + 1)) {
    }
    return high;
}

// Makes the kernel's table of descriptors reach all numbers that the node will get.
void growDescriptorTable() {
    const KeepErrno keeper;
    rlimit limit = {};
    const int low = real::openat(AT_FDCWD, "/dev/null", O_RDONLY | O_CLOEXEC, 0);
    if (low < 0 || getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return;
    }
    const auto end = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, kEndOfDescriptors));
    const int last = duplicateFrom(low, end - 1, O_CLOEXEC);
    real::close(low);
    if (last >= 0) {
        real::close(last);
    }
}

void takeOverProcess() {
    gProcess = getpid();
    growDescriptorTable();
}

// The loader runs this before the program has threads.
[[gnu::constructor]] void takeOverAtStart() {
    takeOverProcess();
    pthread_atfork(nullptr, nullptr, takeOverProcess);
}

// Nobody told this library that the number stands for something else by now.
void forget(int descriptor) {
    tellClosed(descriptor);
    setState(descriptor, isOpen(descriptor) ? NodeState::Foreign : NodeState::Closed);
}

}  // namespace

// A path that cannot be read is left to the kernel, which refuses it.
bool isNodePath(const char* path) {
    constexpr std::string_view kNode(VELK_NODE_PATH, sizeof VELK_NODE_PATH);  // with its end
    if (path == nullptr) {
        return false;
    }
    std::array<char, kNode.size()> start = {};
    const ssize_t copied = copyReadable(start.data(), path, start.size());
    return copied < 0 ? std::string_view(path) == VELK_NODE_PATH
                      : std::string_view(start.data(), static_cast<size_t>(copied)) == kNode;
}

bool isNodeDescriptor(int descriptor) {
    const NodeState state = stateOf(descriptor);
    if (state == NodeState::Foreign) {
        return false;
    }
    const KeepErrno keeper;
    if (state == NodeState::Closed) {
        return !isOpen(descriptor);
    }
    // Only low numbers are handed out again soon enough to be worth a system call.
    if (descriptor < kFirstDescriptor && isOwnProcess() && !isStandIn(descriptor)) {
        forget(descriptor);
        return stateOf(descriptor) == NodeState::Closed;
    }
    return true;
}

int openNode(int flags) {
    if ((flags & O_PATH) != 0) {  // opens no driver
        return real::openat(AT_FDCWD, pathBehindNode(), flags, 0);
    }
    const int callersErrno = errno;
    const int descriptor = makeDescriptor(flags);
    if (descriptor < 0) {
        return -1;
    }
    if (static_cast<size_t>(descriptor) >= kNumbers) {
        real::close(descriptor);
        return answer(-EMFILE, callersErrno);
    }
    const int reply = ask([=] { return controlNode().open(descriptor, currentTid()); });
    if (reply < 0) {
        real::close(descriptor);
        return answer(reply, callersErrno);
    }
    setOpen(descriptor);
    return answer(descriptor, callersErrno);
}

int commandNode(int descriptor, unsigned long request, const void* record) {
    const int callersErrno = errno;
    const auto number = static_cast<uint32_t>(request);
    const SafeCopy copy(record, _IOC_SIZE(number));
    const int reply = ask(
            [&] { return controlNode().command(descriptor, number, copy.get(), currentTid()); });
    return answer(answerOfKernel(descriptor, number, record, copy.get(), reply), callersErrno);
}

int closeNode(int descriptor) {
    if (!isOwnProcess()) {
        return real::close(descriptor);
    }
    const int callersErrno = errno;
    if (stateOf(descriptor) == NodeState::Open && !isStandIn(descriptor)) {
        forget(descriptor);
        return real::close(descriptor);
    }
    const int reply = tellClosed(descriptor);
    if (reply == 0) {
        // In this order, so that a second close meanwhile still finds the node's number.
        real::close(descriptor);
        setState(descriptor, NodeState::Closed);
    }
    return answer(reply, callersErrno);
}

void noteDescriptor(int descriptor, int copy) {
    const NodeState state = stateOf(descriptor);
    if (copy < 0 || static_cast<size_t>(copy) >= kNumbers || copy == descriptor ||
        (state != NodeState::Open && stateOf(copy) == NodeState::Foreign) || !isOwnProcess()) {
        return;
    }
    const KeepErrno keeper;
    if (stateOf(copy) == NodeState::Open) {
        tellClosed(copy);
    }
    setState(copy, NodeState::Foreign);
    if (state == NodeState::Open &&
        ask([=] { return controlNode().duplicate(descriptor, copy); }) == 0) {
        setOpen(copy);
    }
}

void noteClosed(unsigned first, unsigned last) {
    const KeepErrno keeper;
    for (unsigned i = first; i <= std::min(last, gHighest.load()); ++i) {
        const auto descriptor = static_cast<int>(i);
        if (stateOf(descriptor) == NodeState::Open && isOwnProcess()) {
            tellClosed(descriptor);
            setState(descriptor, NodeState::Closed);
        }
    }
}

}  // namespace desk
