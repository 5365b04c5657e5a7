#include "node/RealCalls.h"

#include <sys/syscall.h>
#include <unistd.h>

#include "node/NextDefinition.h"

namespace desk::real {

namespace {

constinit NextDefinition<int(int, const char*, int, ...)> gOpenat("openat");
constinit NextDefinition<int(int, unsigned long, ...)> gIoctl("ioctl");
constinit NextDefinition<int(int, int, ...)> gFcntl("fcntl64");
constinit NextDefinition<int(int)> gClose("close");
constinit NextDefinition<FILE*(const char*, const char*)> gFopen("fopen64");
constinit NextDefinition<FILE*(const char*, const char*, FILE*)> gFreopen("freopen64");
constinit NextDefinition<int(FILE*)> gFclose("fclose");
constinit NextDefinition<void(int)> gCloseFrom("closefrom");

// Before the C library's own can be found, the kernel is asked directly.
template <typename Function, typename... Arguments>
int call(NextDefinition<Function>& next, long number, Arguments... arguments) {
    if (Function* function = next.get()) {
        return function(arguments...);
    }
    return static_cast<int>(syscall(number, arguments...));
}

}  // namespace

int openat(int folder, const char* path, int flags, mode_t mode) {
    return call(gOpenat, SYS_openat, folder, path, flags, mode);
}

int ioctl(int descriptor, unsigned long request, void* argument) {
    return call(gIoctl, SYS_ioctl, descriptor, request, argument);
}

int fcntl(int descriptor, int command, void* argument) {
    return call(gFcntl, SYS_fcntl, descriptor, command, argument);
}

int close(int descriptor) {
    return call(gClose, SYS_close, descriptor);
}

int closeRange(unsigned first, unsigned last, int flags) {
    return static_cast<int>(syscall(SYS_close_range, first, last, flags));
}

void closeFrom(int first) {
    gCloseFrom.get()(first);
}

int dup3(int descriptor, int target, int flags) {
    return static_cast<int>(syscall(SYS_dup3, descriptor, target, flags));
}

FILE* fopen(const char* path, const char* mode) {
    return gFopen.get()(path, mode);
}

FILE* freopen(const char* path, const char* mode, FILE* stream) {
    return gFreopen.get()(path, mode, stream);
}

int fclose(FILE* stream) {
    return gFclose.get()(stream);
}

}  // namespace desk::real
