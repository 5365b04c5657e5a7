/*
 * A program that opens the node in every way that there is, and sends a command on each. It says
 * which way does not lead where it does with a kernel.
 */
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "foundation/CommandRecords.h"

namespace {

const char* const kUnreadablePath = reinterpret_cast<const char*>(8);
// Without the promise of its declaration that the path is never null.
int (*const volatile kOpen)(const char*, int, ...) = open;

int openNode() {
    return open(VELK_NODE_PATH, O_RDWR);
}

int descriptorOf(FILE* stream) {
    return stream != nullptr ? fileno(stream) : -1;
}

struct Way {
    const char* name;
    int (*open)();
    int error;  // that opening or the command has to have, or 0
};

constexpr Way kWays[] = {
        {"open", openNode, 0},
        {"openat", [] { return openat(AT_FDCWD, VELK_NODE_PATH, O_RDWR); }, 0},
        {"fopen", [] { return descriptorOf(fopen(VELK_NODE_PATH, "r+")); }, 0},
        {"fopen as a new file", [] { return descriptorOf(fopen(VELK_NODE_PATH, "wx")); }, EEXIST},
        {"O_PATH", [] { return open(VELK_NODE_PATH, O_PATH); }, EBADF},
        {"dup", [] { return dup(openNode()); }, 0},
        {"dup2", [] { return dup2(openNode(), 700); }, 0},
        {"dup3", [] { return dup3(openNode(), 701, O_CLOEXEC); }, 0},
        {"F_DUPFD", [] { return fcntl(openNode(), F_DUPFD, 800); }, 0},
        {"dup2 of another file",
         [] {
             const int node = openNode();
             return dup2(open("/dev/null", O_RDWR), node);
         },
         ENOTTY},
        {"freopen of another file",
         [] {
             FILE* const node = fopen(VELK_NODE_PATH, "r");
             return node != nullptr ? descriptorOf(freopen("/dev/null", "r", node)) : -1;
         },
         ENOTTY},
        {"no path", [] { return kOpen(nullptr, O_RDWR); }, EFAULT},
        {"an unreadable path", [] { return kOpen(kUnreadablePath, O_RDWR); }, EFAULT},
};

int errorOf(const Way& way) {
    std::array<char, _IOC_SIZE(VELK_IOC_VSYNC)> record = {};
    const int descriptor = way.open();
    return descriptor < 0 || ioctl(descriptor, VELK_IOC_VSYNC, record.data()) != 0 ? errno : 0;
}

}  // namespace

int main() {
    int status = 0;
    for (const Way& way : kWays) {
        const int error = errorOf(way);
        if (error != way.error) {
            fprintf(stderr, "node-ways: %s: found %s, expected %s\n", way.name,
                    strerrorname_np(error), strerrorname_np(way.error));
            status = 1;
        }
    }
    return status;
}
