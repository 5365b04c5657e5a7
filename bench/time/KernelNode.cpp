/*
 * The control node of the timed measurements. The library's open() gets a descriptor of /dev/null,
 * and its commands reach the kernel as FIGETBSZ: a request that returns 0, that accesses the
 * caller's memory, as a driver that reads a record, and that takes no lock for which threads would
 * wait for each other. A driver that does more makes the library's own share smaller.
 *
 * The program's own calls go through these functions too, so that both sides of a ratio include
 * their cost.
 *
 * The two functions have names of their own in the source, because C libraries declare theirs with
 * different types.
 */
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>

#include "foundation/CommandTable.h"

extern "C" {

int openOrNull(const char* path, int flags, ...) __asm__("open");
int ioctlOrBlockSize(int fd, unsigned long request, ...) noexcept __asm__("ioctl");

int openOrNull(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    const bool isNode = std::strcmp(path, VELK_NODE_PATH) == 0;
    return static_cast<int>(
            syscall(SYS_openat, AT_FDCWD, isNode ? "/dev/null" : path, flags, mode));
}

int ioctlOrBlockSize(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const bool isCommand = _IOC_TYPE(request) == _IOC_TYPE(VELK_IOC_INIT);
    int blockSize = 0;  // the record is not the kernel's to write
    return static_cast<int>(isCommand ? syscall(SYS_ioctl, fd, FIGETBSZ, &blockSize)
                                      : syscall(SYS_ioctl, fd, request, argument));
}
}
