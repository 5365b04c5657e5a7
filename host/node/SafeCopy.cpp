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

SafeCopy::SafeCopy(const void* source, size_t size) {
    if (source == nullptr) {
        return;
    }
    size = std::min(size, mBytes.size());
    const char here = 0;
    const int callersErrno = errno;
    bool isReadable = true;
    if (isOnOwnStack(source, &here)) {
        std::memcpy(mBytes.data(), source, size);
    } else {
        const iovec to = {mBytes.data(), size};
        const iovec from = {const_cast<void*>(source), size};
        const ssize_t copied = process_vm_readv(getpid(), &to, 1, &from, 1, 0);
        if (copied < 0 && errno != EFAULT) {
            // Not allowed or not known here: the pointer has to be trusted.
            std::memcpy(mBytes.data(), source, size);
        } else {
            isReadable = copied == static_cast<ssize_t>(size);
        }
        errno = callersErrno;
    }
    mRecord = isReadable ? mBytes.data() : nullptr;
}

}  // namespace desk
