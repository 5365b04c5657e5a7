/*
 * The control node and the dump file as the library's open, ioctl, write and close see them (the
 * linker wraps the four). Every other path and descriptor goes to the C library.
 *
 * The node accepts everything until a fault is injected. It hands out the descriptors 100, 101, ...
 * and never one twice. A use after a close is a violation, as is a request of no command.
 */
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace fake {

// What can fail: these four, and the commands by their numbers.
enum : unsigned { kOpenNode, kOpenDump, kClose, kWrite };
inline constexpr int kForever = 1 << 30;
inline constexpr int kFirstDescriptor = 100;

class Node {
  public:
    void reset();

    // The next `times` calls of this kind give `result` and set errno.
    void fail(unsigned what, int error, int times = kForever, int64_t result = -1);
    void failNothing();
    void handOut(int descriptor) { mNext = descriptor; }
    std::vector<int> openDescriptors() const;
    uint64_t commands() const { return mCommands; }
    // Sees every command with its answer and every open of the node, the latter without a record.
    std::function<void(unsigned what, const void* record, size_t size, int result)> observer;

    // Whether the call is the library's or the descriptor one of the node's.
    bool serves(int fd) const;
    int onOpen(const char* path, int flags, unsigned mode);
    int onIoctl(int fd, unsigned long request, const void* record);
    int onClose(int fd);
    int64_t onWrite(int fd, const void* bytes, size_t size);

  private:
    enum State : uint8_t { kNeverOpened, kOpen, kClosed };
    struct InjectedResult {
        int times;
        int error;
        int64_t result;
    };

    bool isOpen(int fd) const;
    // What the call gives instead of `result` while a fault is injected.
    int64_t injectedOr(unsigned what, int64_t result);

    std::mutex mMutex;
    std::map<unsigned, InjectedResult> mInjected;
    std::atomic<bool> mHasInjected = false;
    std::atomic<int> mNext = kFirstDescriptor;
    std::atomic<size_t> mOpens = 0;
    std::atomic<uint64_t> mCommands = 0;
    std::vector<std::atomic<State>> mStates = std::vector<std::atomic<State>>(1 << 20);
};

Node& node();

}  // namespace fake
