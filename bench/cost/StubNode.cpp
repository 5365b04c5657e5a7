#include "cost/StubNode.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

namespace {
constexpr int kNodeDescriptor = 1000;
int gThread = 1;
}  // namespace

void bench::setThread(int tid) {
    gThread = tid;
}

extern "C" {

int open(const char* /*path*/, int /*flags*/, ...) {
    return kNodeDescriptor;
}

int ioctl(int /*fd*/, unsigned long /*request*/, ...) noexcept {
    return 0;
}

int close(int /*fd*/) {
    return 0;
}

pid_t gettid() noexcept {
    return gThread;
}
}
