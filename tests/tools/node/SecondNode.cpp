/*
 * A second driver, to stand where the kernel's is: behind the C library's open and ioctl, with a
 * model of its own. The environment makes it a wrong one:
 *
 *     SECOND_NODE_FAULTS    faults that the model injects, as velk-replay --driver takes them
 *     SECOND_NODE_ANSWERS   FROM:TO, two errnos or 0: every answer of the one becomes the other
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "clock/DeskClock.h"
#include "driver/DriverModel.h"

#define SECOND_NODE_CALL extern "C" __attribute__((visibility("default")))

namespace {

// A device that nobody else opens stands for the node, so that duplicates are known as well.
constexpr const char* kStandIn = "/dev/full";
constexpr int kFile = 3;  // one in the model for all

template <typename Function>
Function* nextDefinition(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool isNode(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) &&
           status.st_rdev == makedev(1, 7);
}

desk::DriverModel& model() {
    static desk::DriverModel& instance = []() -> desk::DriverModel& {
        auto* const made = new desk::DriverModel;
        const char* const faults = getenv("SECOND_NODE_FAULTS");
        made->injectFaults(desk::InjectedFaults::parse(faults != nullptr ? faults : ""));
        made->open(kFile, desk::currentTid());
        return *made;
    }();
    return instance;
}

int altered(int error) {
    int from = -1;
    int to = -1;
    const char* const answers = getenv("SECOND_NODE_ANSWERS");
    const bool isWrong =
            answers != nullptr && sscanf(answers, "%d:%d", &from, &to) == 2 && error == from;
    return isWrong ? to : error;
}

int command(uint32_t request, void* argument) {
    std::array<std::byte, VELK_LARGEST_RECORD> record = {};
    const iovec to = {record.data(), std::min<size_t>(_IOC_SIZE(request), record.size())};
    const iovec from = {argument, to.iov_len};
    const bool isRead =
            process_vm_readv(getpid(), &to, 1, &from, 1, 0) == static_cast<ssize_t>(to.iov_len);
    return -model().command(kFile, request, isRead ? record.data() : nullptr, desk::currentTid());
}

int openAny(int folder, const char* path, int flags, mode_t mode) {
    const bool isNodePath = path != nullptr && std::string_view(path) == VELK_NODE_PATH;
    return nextDefinition<int(int, const char*, int, ...)>("openat")(
            folder, isNodePath ? kStandIn : path, flags, mode);
}

}  // namespace

SECOND_NODE_CALL int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return openAny(AT_FDCWD, path, flags, mode);
}

SECOND_NODE_CALL int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return openAny(folder, path, flags, mode);
}

SECOND_NODE_CALL int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (!isNode(descriptor)) {
        return nextDefinition<int(int, unsigned long, ...)>("ioctl")(descriptor, request, argument);
    }
    const int error = altered(command(static_cast<uint32_t>(request), argument));
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : 0;
}
