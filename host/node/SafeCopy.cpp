#include "node/SafeCopy.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace desk {

namespace {

// Callers of this function are further up the same stack, so what lies shortly above is readable.
bool isOnOwnStack(const void* source, const void* here) {
    constexpr uintptr_t kCallersFrames = 4096;
    return reinterpret_cast<uintptr_t>(source) - reinterpret_cast<uintptr_t>(here) < kCallersFrames;
}

}  // namespace

ssize_t copyReadable(void* target, const void* source, size_t size) {
    const int callersErrno = errno;
    const iovec to = {target, size};
    const iovec from = {const_cast<void*>(source), size};
    const ssize_t copied = process_vm_readv(getpid(), &to, 1, &from, 1, 0);
    const bool isForbidden = copied < 0 && errno != EFAULT;
    errno = callersErrno;
    return isForbidden ? -1 : std::max<ssize_t>(copied, 0);
}

SafeCopy::SafeCopy(const void* source, size_t size) {
    if (source == nullptr) {
        return;
    }
    size = std::min(size, mBytes.size());
    const char here = 0;
    const ssize_t copied =
            isOnOwnStack(source, &here) ? -1 : copyReadable(mBytes.data(), source, size);
    if (copied < 0) {
        std::memcpy(mBytes.data(), source, size);
    }
    const bool isWhole = copied < 0 || copied == static_cast<ssize_t>(size);
    mRecord = isWhole ? mBytes.data() : nullptr;
}

}  // namespace desk
