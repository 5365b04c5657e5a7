#include "node/KernelNode.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <utility>

#include "foundation/CommandRecords.h"
#include "node/RealCalls.h"

namespace desk {

namespace {

struct KernelNode {
    struct stat status = {};
    std::function<void(const DifferentAnswers&)> onDifference;
};

// Null while the model answers alone. Never destroyed: threads may use it until the process ends.
constinit const KernelNode* gKernelNode = nullptr;

}  // namespace

int useKernelNode(std::function<void(const DifferentAnswers&)> onDifference) {
    const int kept = real::openat(AT_FDCWD, VELK_NODE_PATH, O_RDONLY | O_CLOEXEC, 0);
    if (kept < 0) {
        return errno;
    }
    auto* const node = new KernelNode;
    node->onDifference = std::move(onDifference);
    fstat(kept, &node->status);
    gKernelNode = node;
    return 0;
}

const char* pathBehindNode() {
    return gKernelNode != nullptr ? VELK_NODE_PATH : "/dev/null";
}

bool isBehindNode(const struct stat& status) {
    if (gKernelNode != nullptr) {
        return status.st_dev == gKernelNode->status.st_dev &&
               status.st_ino == gKernelNode->status.st_ino;
    }
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

int answerOfKernel(int descriptor, uint32_t request, const void* record, const void* copy,
                   int reply) {
    if (gKernelNode == nullptr) {
        return reply;
    }
    const int result = real::ioctl(descriptor, request, const_cast<void*>(record));
    const int kernel = result < 0 ? -errno : 0;
    if (kernel != reply) {
        gKernelNode->onDifference({request, copy, -reply, -kernel});
    }
    return kernel;
}

}  // namespace desk
