/*
 * The kernel's own driver behind the control node, with the model beside it.
 */
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>

namespace desk {

// Of a command that model and kernel answered differently. Errnos, 0 for taken.
struct DifferentAnswers {
    uint32_t request = 0;
    const void* record = nullptr;  // null where the caller's could not be read
    int model = 0;
    int kernel = 0;
};

/*
 * From here on everything that this process does with the node reaches the kernel's driver, whose
 * answers the callers get, and the model watches. `onDifference` is called on the calling thread.
 * Keeps a file of its own, so that the driver's state of this process lasts as long as the process.
 *
 * Returns 0, or the errno of the kernel, which leaves all as it was. To be called once, before
 * anything opens the node.
 */
__attribute__((visibility("default"))) int useKernelNode(
        std::function<void(const DifferentAnswers&)> onDifference);

// --- For the node itself ---

// What a descriptor of the node is really open on: the kernel's node, or something harmless.
const char* pathBehindNode();
bool isBehindNode(const struct stat& status);

// The answer for the caller, 0 or a negated errno, where the model gave `reply`. `record` is the
// caller's, `copy` what the model saw.
int answerOfKernel(int descriptor, uint32_t request, const void* record, const void* copy,
                   int reply);

}  // namespace desk
