/*
 * The calls of this process that open, duplicate, command and close descriptors, as far as they
 * concern the control node. Everything else goes to the C library untouched.
 *
 * This library stands before the C library. Its functions run in every thread and from the first
 * moments of the process, sanitizer runtimes included, so they rely on constant initialisation
 * alone until the node itself is meant.
 */
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string_view>

#include "node/NodeDescriptors.h"
#include "node/RealCalls.h"

#define VELK_INTERPOSED extern "C" __attribute__((visibility("default")))

namespace {

using desk::isNodeDescriptor;
using desk::isNodePath;

mode_t modeArgument(int flags, va_list arguments) {
    const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return hasMode ? va_arg(arguments, mode_t) : 0;
}

int openAny(int folder, const char* path, int flags, mode_t mode = 0) {
    if (isNodePath(path)) {
        return desk::openNode(flags);
    }
    const int descriptor = desk::real::openat(folder, path, flags, mode);
    desk::noteDescriptor(-1, descriptor);
    return descriptor;
}

// A duplicate that the kernel made.
int duplicated(int descriptor, int copy) {
    desk::noteDescriptor(descriptor, copy);
    return copy;
}

int controlDescriptor(int descriptor, int command, void* argument) {
    const int result = desk::real::fcntl(descriptor, command, argument);
    return command == F_DUPFD || command == F_DUPFD_CLOEXEC ? duplicated(descriptor, result)
                                                            : result;
}

// The flags of open for a mode of fopen, or -1 for a mode that fopen does not know.
int flagsOfMode(const char* mode) {
    const std::string_view text = mode;
    if (text.empty() || std::string_view("rwa").find(text.front()) == std::string_view::npos) {
        return -1;
    }
    const int oneWay = text.front() == 'r' ? O_RDONLY : O_WRONLY;
    const int access = text.find('+') != std::string_view::npos ? O_RDWR : oneWay;
    return access | (text.front() == 'r' ? 0 : O_CREAT) |
           (text.find('x') != std::string_view::npos ? O_EXCL : 0) |
           (text.find('e') != std::string_view::npos ? O_CLOEXEC : 0);
}

FILE* openStream(const char* path, const char* mode) {
    if (!isNodePath(path)) {
        FILE* const stream = desk::real::fopen(path, mode);
        if (stream != nullptr) {
            desk::noteDescriptor(-1, fileno(stream));
        }
        return stream;
    }
    const int flags = flagsOfMode(mode);
    if (flags < 0) {
        errno = EINVAL;
        return nullptr;
    }
    const int descriptor = desk::openNode(flags);
    FILE* const stream = descriptor >= 0 ? fdopen(descriptor, mode) : nullptr;
    if (stream == nullptr && descriptor >= 0) {
        desk::closeNode(descriptor);
    }
    return stream;
}

int closeStream(FILE* stream) {
    const int callersErrno = errno;
    const int descriptor = fileno(stream);
    errno = callersErrno;
    const int result = desk::real::fclose(stream);
    if (descriptor >= 0) {
        desk::noteClosed(static_cast<unsigned>(descriptor), static_cast<unsigned>(descriptor));
    }
    return result;
}

// Puts the node in the place of the file that the stream is open on.
FILE* moveToNode(const char* mode, FILE* stream) {
    const int flags = flagsOfMode(mode);
    const int node = desk::openNode(flags);
    if (node < 0) {
        const int error = errno;
        closeStream(stream);
        errno = error;
        return nullptr;
    }
    desk::noteDescriptor(node, desk::real::dup3(node, fileno(stream), flags & O_CLOEXEC));
    desk::closeNode(node);
    return stream;
}

FILE* reopenStream(const char* path, const char* mode, FILE* stream) {
    if (path == nullptr) {
        return desk::real::freopen(path, mode, stream);  // the stream keeps its file
    }
    const bool isForNode = isNodePath(path);
    const auto former = static_cast<unsigned>(fileno(stream));
    FILE* const opened = desk::real::freopen(isForNode ? "/dev/null" : path, mode, stream);
    desk::noteClosed(former, former);
    if (opened != nullptr) {
        desk::noteDescriptor(-1, fileno(opened));
    }
    return opened != nullptr && isForNode ? moveToNode(mode, opened) : opened;
}

}  // namespace

// The C library has each of these functions in several spellings: for files beyond 2 GiB, and for
// callers that are built with _FORTIFY_SOURCE.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
VELK_INTERPOSED int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(AT_FDCWD, path, flags, mode);
}

VELK_INTERPOSED int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(AT_FDCWD, path, flags | O_LARGEFILE, mode);
}

VELK_INTERPOSED int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(folder, path, flags, mode);
}

VELK_INTERPOSED int openat64(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openAny(folder, path, flags | O_LARGEFILE, mode);
}

VELK_INTERPOSED int __open_2(const char* path, int flags) {
    return openAny(AT_FDCWD, path, flags);
}

VELK_INTERPOSED int __open64_2(const char* path, int flags) {
    return openAny(AT_FDCWD, path, flags | O_LARGEFILE);
}

VELK_INTERPOSED int __openat_2(int folder, const char* path, int flags) {
    return openAny(folder, path, flags);
}

VELK_INTERPOSED int __openat64_2(int folder, const char* path, int flags) {
    return openAny(folder, path, flags | O_LARGEFILE);
}
// NOLINTEND(bugprone-reserved-identifier)

VELK_INTERPOSED FILE* fopen(const char* path, const char* mode) {
    return openStream(path, mode);
}

VELK_INTERPOSED FILE* fopen64(const char* path, const char* mode) {
    return openStream(path, mode);
}

VELK_INTERPOSED int dup(int descriptor) noexcept {
    return controlDescriptor(descriptor, F_DUPFD, nullptr);
}

VELK_INTERPOSED int dup2(int descriptor, int target) noexcept {
    if (descriptor == target) {
        return desk::real::fcntl(descriptor, F_GETFD, nullptr) >= 0 ? target : -1;
    }
    return duplicated(descriptor, desk::real::dup3(descriptor, target, 0));
}

VELK_INTERPOSED int dup3(int descriptor, int target, int flags) noexcept {
    return duplicated(descriptor, desk::real::dup3(descriptor, target, flags));
}

VELK_INTERPOSED int fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return controlDescriptor(descriptor, command, argument);
}

VELK_INTERPOSED int fcntl64(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return controlDescriptor(descriptor, command, argument);
}

VELK_INTERPOSED int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return isNodeDescriptor(descriptor) ? desk::commandNode(descriptor, request, argument)
                                        : desk::real::ioctl(descriptor, request, argument);
}

VELK_INTERPOSED int close(int descriptor) {
    return isNodeDescriptor(descriptor) ? desk::closeNode(descriptor)
                                        : desk::real::close(descriptor);
}

VELK_INTERPOSED FILE* freopen(const char* path, const char* mode, FILE* stream) {
    return reopenStream(path, mode, stream);
}

VELK_INTERPOSED FILE* freopen64(const char* path, const char* mode, FILE* stream) {
    return reopenStream(path, mode, stream);
}

VELK_INTERPOSED int fclose(FILE* stream) {
    return closeStream(stream);
}

VELK_INTERPOSED int close_range(unsigned first, unsigned last, int flags) noexcept {
    constexpr int kCloseOnExec = 4;
    const int result = desk::real::closeRange(first, last, flags);
    if (result == 0 && (flags & kCloseOnExec) == 0) {
        desk::noteClosed(first, last);
    }
    return result;
}

VELK_INTERPOSED void closefrom(int first) noexcept {
    const auto from = static_cast<unsigned>(first < 0 ? 0 : first);
    desk::real::closeFrom(static_cast<int>(from));
    desk::noteClosed(from, std::numeric_limits<unsigned>::max());
}
