#include "cost/StubNode.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <string_view>

namespace {
constexpr int kNodeDescriptor = 1000;
int gThread = 1;
}  // namespace

void bench::setThread(int tid) {
    gThread = tid;
}

extern "C" {

// Files other than the node are those of a recording.
int open(const char* path, int flags, ...) {
    if (std::string_view(path).ends_with("velk_ioctl")) {
        return kNodeDescriptor;
    }
    constexpr mode_t kReadableByAll = 0644;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, kReadableByAll));
}

int ioctl(int /*fd*/, unsigned long /*request*/, ...) noexcept {
    return 0;
}

int close(int fd) {
    return fd == kNodeDescriptor ? 0 : static_cast<int>(syscall(SYS_close, fd));
}

pid_t gettid() noexcept {
    return gThread;
}
}
