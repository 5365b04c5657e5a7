#include "support/Node.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>

#include "support/RecordText.h"
#include "support/Recorder.h"

namespace fake {
namespace {

// Relaxed: ordering by the fakes would hide races between the library's threads.
constexpr auto kRelaxed = std::memory_order_relaxed;

bool isNodePath(const char* path) {
    return std::strcmp(path, "/proc/velk/velk_ioctl") == 0;
}

}  // namespace

Node& node() {
    static auto* const instance = new Node;
    return *instance;
}

void Node::reset() {
    failNothing();
    for (size_t fd = 0; fd < kFirstDescriptor + mOpens; ++fd) {
        mStates[fd] = kNeverOpened;
    }
    mOpens = 0;
    mNext = kFirstDescriptor;
    mCommands = 0;
}

void Node::failNothing() {
    const std::lock_guard lock(mMutex);
    mInjected.clear();
    mHasInjected = false;
}

void Node::fail(unsigned what, int error, int times, int64_t result) {
    const std::lock_guard lock(mMutex);
    mInjected[what] = {times, error, result};
    mHasInjected = true;
}

int64_t Node::injectedOr(unsigned what, int64_t result) {
    if (!mHasInjected.load(kRelaxed)) {
        return result;
    }
    const std::lock_guard lock(mMutex);
    const auto injected = mInjected.find(what);
    if (injected == mInjected.end() || injected->second.times == 0) {
        return result;
    }
    --injected->second.times;
    errno = injected->second.error;
    return injected->second.result;
}

std::vector<int> Node::openDescriptors() const {
    std::vector<int> descriptors;
    for (size_t fd = 0; fd < kFirstDescriptor + mOpens; ++fd) {
        if (mStates[fd] == kOpen) {
            descriptors.push_back(static_cast<int>(fd));
        }
    }
    return descriptors;
}

bool Node::isOpen(int fd) const {
    const auto index = static_cast<size_t>(fd);
    return index < mStates.size() && mStates[index].load(kRelaxed) == kOpen;
}

bool Node::serves(int fd) const {
    return tInLibrary || isOpen(fd);
}

int Node::onOpen(const char* path, int flags, unsigned mode) {
    const Side side(false);
    const bool isNode = isNodePath(path);
    auto fd = static_cast<int>(injectedOr(isNode ? kOpenNode : kOpenDump, 0));
    if (fd >= 0) {
        fd = mNext.fetch_add(1, kRelaxed);
        mOpens.fetch_add(1, kRelaxed);
        mStates.at(static_cast<size_t>(fd)).store(kOpen, kRelaxed);
        if (fd < kFirstDescriptor) {
            mNext = kFirstDescriptor;
        }
    }
    if (isNode && observer) {
        observer(kOpenNode, nullptr, 0, fd);
    }
    if (recorder().isOn()) {
        const bool rewrites = flags == (O_RDWR | O_CREAT | O_TRUNC);
        const std::string how = isNode && flags == O_RDONLY
                                        ? "node"
                                        : std::string(path) + ' ' +
                                                  (rewrites ? "rewrite" : std::to_string(flags)) +
                                                  ' ' + std::to_string(mode);
        recorder().record(kNode, "open " + how + " = " + std::to_string(fd));
    }
    return fd;
}

int Node::onIoctl(int fd, unsigned long request, const void* record) {
    const Side side(false);
    const auto number = static_cast<unsigned>(request & 0xFF);
    if (!isRequest(request) || !isOpen(fd)) {
        recorder().violation("ioctl " + std::to_string(fd) + ' ' + std::to_string(request));
        errno = EBADF;
        return -1;
    }
    mCommands.fetch_add(1, kRelaxed);
    const auto result = static_cast<int>(injectedOr(number, 0));
    const size_t size = (request >> 16) & 0x3FFF;
    if (observer) {
        observer(number, record, size, result);
    }
    if (recorder().isOn()) {
        const std::string where = fd == kFirstDescriptor ? "" : '@' + std::to_string(fd);
        const std::string how = result == 0 ? "" : " = " + std::to_string(result);
        const std::string what = describeRecord(number, static_cast<const uint8_t*>(record), size);
        recorder().record(Event{.kind = kNode,
                                .text = "ioctl" + where + ' ' + std::to_string(number) + what + how,
                                .request = static_cast<uint32_t>(request)});
    }
    if (!isOpen(fd)) {
        recorder().violation("closed while in ioctl: " + std::to_string(fd));
    }
    return result;
}

int Node::onClose(int fd) {
    const Side side(false);
    if (!isOpen(fd) || mStates[static_cast<size_t>(fd)].exchange(kClosed, kRelaxed) != kOpen) {
        recorder().violation("close of what is not open: " + std::to_string(fd));
    }
    recorder().record(kNode, "close " + std::to_string(fd));
    return static_cast<int>(injectedOr(kClose, 0));
}

int64_t Node::onWrite(int fd, const void* bytes, size_t size) {
    const Side side(false);
    std::string text(static_cast<const char*>(bytes), size);
    text.ends_with('\n') ? text.pop_back() : text.push_back('$');
    const int64_t result = injectedOr(kWrite, static_cast<int64_t>(size));
    recorder().record(kNode, "write " + std::to_string(fd) + ' ' + std::to_string(size) + " = " +
                                     std::to_string(result) + '\n' + text);
    return result;
}

}  // namespace fake

extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_ioctl(int fd, unsigned long request, ...);
int __real_close(int fd);
ssize_t __real_write(int fd, const void* bytes, size_t size);

int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    return fake::tInLibrary ? fake::node().onOpen(path, flags, mode)
                            : __real_open(path, flags, mode);
}

int __wrap_ioctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fake::node().serves(fd) ? fake::node().onIoctl(fd, request, argument)
                                   : __real_ioctl(fd, request, argument);
}

int __wrap_close(int fd) {
    return fake::node().serves(fd) ? fake::node().onClose(fd) : __real_close(fd);
}

ssize_t __wrap_write(int fd, const void* bytes, size_t size) {
    return fake::node().serves(fd) ? fake::node().onWrite(fd, bytes, size)
                                   : __real_write(fd, bytes, size);
}
}
