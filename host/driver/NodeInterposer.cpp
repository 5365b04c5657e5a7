/*
 * open, ioctl and close of this process, as far as they concern the control node. Everything else
 * goes to the C library untouched.
 *
 * This file is the whole of a shared library that stands before the C library. Its functions run
 * in every thread and from the first moments of the process, sanitizer runtimes included, so they
 * rely on constant initialisation alone until the node itself is meant.
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <new>

#include "clock/DeskClock.h"
#include "driver/DriverModel.h"

#define VELK_INTERPOSED extern "C" __attribute__((visibility("default")))

namespace {

using desk::controlNode;
using desk::currentTid;

// The next definition of a function behind this library, looked up on first use.
template <typename Function>
class NextDefinition {
  public:
    explicit constexpr NextDefinition(const char* name) : mName(name) {}

    // Null when there is none.
    Function* get() {
        Function* function = mFunction.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mName));
            mFunction.store(function, std::memory_order_relaxed);
        }
        return function;
    }

  private:
    const char* mName;
    std::atomic<Function*> mFunction = nullptr;
};

constinit NextDefinition<int(const char*, int, ...)> gNextOpen("open");
constinit NextDefinition<int(int, unsigned long, ...)> gNextIoctl("ioctl");
constinit NextDefinition<int(int)> gNextClose("close");

int realOpen(const char* path, int flags, mode_t mode) {
    if (auto* next = gNextOpen.get()) {
        return next(path, flags, mode);
    }
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int realIoctl(int descriptor, unsigned long request, void* argument) {
    if (auto* next = gNextIoctl.get()) {
        return next(descriptor, request, argument);
    }
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

int realClose(int descriptor) {
    if (auto* next = gNextClose.get()) {
        return next(descriptor);
    }
    return static_cast<int>(syscall(SYS_close, descriptor));
}

enum class NodeState : uint8_t {
    Foreign,  // has nothing to do with the node
    Open,
    Closed,  // was the node's, and nobody has been seen to use the number since
};

// The node's descriptors lie above those that the kernel hands out by itself, and a number comes
// up again only after all others. So a stale one is told from a new one.
constexpr int kFirstDescriptor = 256;
constexpr size_t kDescriptorLimit = 65536;
constinit std::array<std::atomic<NodeState>, kDescriptorLimit> gNodeStates = {};
constinit std::atomic<int> gNextDescriptor = kFirstDescriptor;

NodeState nodeState(int descriptor) {
    const auto index = static_cast<size_t>(descriptor);
    return index < kDescriptorLimit ? gNodeStates[index].load(std::memory_order_acquire)
                                    : NodeState::Foreign;
}

void setNodeState(int descriptor, NodeState state) {
    gNodeStates[static_cast<size_t>(descriptor)].store(state, std::memory_order_release);
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

// The number in `low`, moved to `first` or above. Negative when there is no room.
int moveUp(int low, int first) {
    const int high = fcntl(low, F_DUPFD_CLOEXEC, first);
    if (high >= 0 && static_cast<size_t>(high) >= kDescriptorLimit) {
        realClose(high);
        return -1;
    }
    return high;
}

// A real descriptor that stands for the node, or -1 with errno.
int makeDescriptor(int flags) {
    const int low = realOpen("/dev/null", flags | O_CLOEXEC, 0);
    if (low < 0) {
        return -1;
    }
    int high = moveUp(low, gNextDescriptor.load(std::memory_order_relaxed));
    if (high < 0) {
        // The numbers are used up: begin again.
        gNextDescriptor.store(kFirstDescriptor, std::memory_order_relaxed);
        high = moveUp(low, kFirstDescriptor);
    }
    if (high < 0) {
        return low;
    }
    realClose(low);
    int next = gNextDescriptor.load(std::memory_order_relaxed);
    while (next <= high && !gNextDescriptor.compare_exchange_weak(next, high + 1)) {
    }
    return high;
}

int openNode(int flags) {
    const int callersErrno = errno;
    const int descriptor = makeDescriptor(flags);
    if (descriptor < 0) {
        return -1;
    }
    const int reply = ask([=] { return controlNode().open(descriptor, currentTid()); });
    if (reply < 0) {
        realClose(descriptor);
        return answer(reply, callersErrno);
    }
    setNodeState(descriptor, NodeState::Open);
    return answer(descriptor, callersErrno);
}

int commandNode(int descriptor, unsigned long request, const void* record) {
    const int callersErrno = errno;
    const int reply = ask([=] {
        return controlNode().command(descriptor, static_cast<uint32_t>(request), record,
                                     currentTid());
    });
    return answer(reply, callersErrno);
}

int closeNode(int descriptor) {
    const int callersErrno = errno;
    const int reply = ask([=] { return controlNode().close(descriptor, currentTid()); });
    if (reply == 0) {
        // In this order, so that a second close meanwhile still finds the node's number.
        realClose(descriptor);
        setNodeState(descriptor, NodeState::Closed);
    }
    return answer(reply, callersErrno);
}

// Somebody else may have got the number since the node's descriptor was closed.
bool isTakenByOthers(int descriptor) {
    const int callersErrno = errno;
    const bool isOpen = fcntl(descriptor, F_GETFD) >= 0;
    errno = callersErrno;
    return isOpen;
}

bool isNodePath(const char* path) {
    const char* node = VELK_NODE_PATH;
    while (*path != '\0' && *path == *node) {
        ++path;
        ++node;
    }
    return *path == *node;
}

mode_t modeArgument(int flags, va_list arguments) {
    const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return hasMode ? va_arg(arguments, mode_t) : 0;
}

int openAny(const char* path, int flags, mode_t mode) {
    return isNodePath(path) ? openNode(flags) : realOpen(path, flags, mode);
}

}  // namespace

VELK_INTERPOSED int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(path, flags, mode);
}

VELK_INTERPOSED int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(path, flags | O_LARGEFILE, mode);
}

// What open becomes in callers that are built with _FORTIFY_SOURCE.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
VELK_INTERPOSED int __open_2(const char* path, int flags) {
    return openAny(path, flags, 0);
}

VELK_INTERPOSED int __open64_2(const char* path, int flags) {
    return openAny(path, flags | O_LARGEFILE, 0);
}
// NOLINTEND(bugprone-reserved-identifier)

VELK_INTERPOSED int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);

    switch (nodeState(descriptor)) {
        case NodeState::Open:
            return commandNode(descriptor, request, argument);
        case NodeState::Closed:
            if (!isTakenByOthers(descriptor)) {
                return commandNode(descriptor, request, argument);
            }
            break;
        case NodeState::Foreign:
            break;
    }
    return realIoctl(descriptor, request, argument);
}

VELK_INTERPOSED int close(int descriptor) {
    switch (nodeState(descriptor)) {
        case NodeState::Open:
            return closeNode(descriptor);
        case NodeState::Closed:
            if (!isTakenByOthers(descriptor)) {
                return closeNode(descriptor);
            }
            setNodeState(descriptor, NodeState::Foreign);
            break;
        case NodeState::Foreign:
            break;
    }
    return realClose(descriptor);
}
