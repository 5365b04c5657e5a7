/*
 * Preloaded into a program, makes one of its calls of the C library fail, or sends it a signal just
 * before one. The environment says which:
 *
 *     VELK_FAULT="KIND NUMBER ERRNO"     the call with this number among those of the kind, counted
 *                                        from 1, fails with this errno
 *     VELK_FAULT="KIND NUMBER -SIGNAL"   that call is made after a signal to the process
 *     VELK_FAULT_MARK                    a file that is made when it happens
 *     VELK_FAULT_IN                      the file name of the program that it is to happen in,
 *                                        empty for any
 *
 * The kind is one of those below, or "any" for all of them.
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct Fault {
    std::array<char, 16> kind = {};
    int number = 0;
    int error = 0;  // of a signal, its negative number
};

Fault readFault() {
    Fault fault;
    const char* text = getenv("VELK_FAULT");
    if (text == nullptr ||
        sscanf(text, "%15s %d %d", fault.kind.data(), &fault.number, &fault.error) != 3) {
        fault.number = 0;
    }
    const char* program = getenv("VELK_FAULT_IN");
    if (program != nullptr && *program != '\0' &&
        strcmp(program, program_invocation_short_name) != 0) {
        fault.number = 0;
    }
    return fault;
}

constinit std::atomic<int> gCalls = 0;

const pid_t gLoaded = getpid();

// Whether the call of this kind is the one to fail; errno is set then.
bool isToFail(const char* kind) {
    static const Fault fault = readFault();
    if (fault.number == 0 ||
        (strcmp(fault.kind.data(), kind) != 0 && strcmp(fault.kind.data(), "any") != 0)) {
        return false;
    }
    if (++gCalls != fault.number) {
        return false;
    }
    if (fault.error < 0 && getpid() != gLoaded) {
        return false;  // signals are for the tool itself, not for a process that it has forked
    }
    const long mark = syscall(SYS_openat, AT_FDCWD, getenv("VELK_FAULT_MARK"),
                              O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (mark < 0) {
        return false;  // a process that shares the calls counted so far has failed already
    }
    syscall(SYS_close, mark);
    if (fault.error < 0) {
        kill(getpid(), -fault.error);
        return false;
    }
    errno = fault.error;
    return true;
}

template <typename Function>
Function* next(Function* /*unused*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return isToFail("open") ? -1 : next(open, "open")(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return isToFail("open") ? -1 : next(open64, "open64")(path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
    return isToFail("open") ? nullptr : next(fopen, "fopen")(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    return isToFail("open") ? nullptr : next(fopen64, "fopen64")(path, mode);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    return isToFail("read") ? -1 : next(read, "read")(descriptor, buffer, size);
}

ssize_t write(int descriptor, const void* buffer, size_t size) {
    return isToFail("write") ? -1 : next(write, "write")(descriptor, buffer, size);
}

ssize_t writev(int descriptor, const iovec* pieces, int count) {
    return isToFail("write") ? -1 : next(writev, "writev")(descriptor, pieces, count);
}

// As the kernel does it, a close that fails has closed.
int close(int descriptor) {
    const bool fails = isToFail("close");
    const int error = errno;
    const int result = next(close, "close")(descriptor);
    errno = fails ? error : errno;
    return fails ? -1 : result;
}

int fclose(FILE* file) {
    const bool fails = isToFail("close");
    const int error = errno;
    const int result = next(fclose, "fclose")(file);
    errno = fails ? error : errno;
    return fails ? EOF : result;
}

void* mmap(void* address, size_t size, int protection, int flags, int descriptor, off_t offset) {
    return isToFail("mmap")
                   ? MAP_FAILED
                   : next(mmap, "mmap")(address, size, protection, flags, descriptor, offset);
}

int fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return isToFail("fcntl") ? -1 : next(fcntl, "fcntl")(descriptor, command, argument);
}

int poll(pollfd* waiting, nfds_t count, int milliseconds) {
    return isToFail("poll") ? -1 : next(poll, "poll")(waiting, count, milliseconds);
}

int pipe2(int* ends, int flags) noexcept {
    return isToFail("pipe2") ? -1 : next(pipe2, "pipe2")(ends, flags);
}

int signalfd(int descriptor, const sigset_t* signals, int flags) noexcept {
    return isToFail("signalfd") ? -1 : next(signalfd, "signalfd")(descriptor, signals, flags);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) noexcept {
    return isToFail("pthread_create")
                   ? errno
                   : next(pthread_create, "pthread_create")(thread, attributes, run, argument);
}

int socket(int domain, int type, int protocol) noexcept {
    return isToFail("socket") ? -1 : next(socket, "socket")(domain, type, protocol);
}

int accept4(int descriptor, sockaddr* address, socklen_t* size, int flags) {
    return isToFail("socket") ? -1 : next(accept4, "accept4")(descriptor, address, size, flags);
}

ssize_t recv(int descriptor, void* buffer, size_t size, int flags) {
    return isToFail("recv") ? -1 : next(recv, "recv")(descriptor, buffer, size, flags);
}

ssize_t send(int descriptor, const void* buffer, size_t size, int flags) {
    return isToFail("send") ? -1 : next(send, "send")(descriptor, buffer, size, flags);
}

int flock(int descriptor, int operation) noexcept {
    return isToFail("flock") ? -1 : next(flock, "flock")(descriptor, operation);
}

int ftruncate(int descriptor, off_t size) noexcept {
    return isToFail("ftruncate") ? -1 : next(ftruncate, "ftruncate")(descriptor, size);
}

int posix_fallocate(int descriptor, off_t offset, off_t size) {
    return isToFail("posix_fallocate")
                   ? errno
                   : next(posix_fallocate, "posix_fallocate")(descriptor, offset, size);
}

pid_t fork() noexcept {
    return isToFail("fork") ? -1 : next(fork, "fork")();
}

int posix_spawnp(pid_t* process, const char* file, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const* words, char* const* variables) {
    return isToFail("fork") ? errno
                            : next(posix_spawnp, "posix_spawnp")(process, file, actions, attributes,
                                                                 words, variables);
}

}  // extern "C"
