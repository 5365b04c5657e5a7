/*
 * A session on the kernel's node: what its driver answers otherwise than the model is told at once.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "driver/DriverSnapshot.h"

namespace desk {

// There is one in a process, and it is made before anything opens the node.
class KernelWatch {
  public:
    // Throws std::runtime_error when the node cannot be opened.
    KernelWatch();
    KernelWatch(const KernelWatch&) = delete;
    KernelWatch& operator=(const KernelWatch&) = delete;

    // Tells where the driver has counted other commands than the model, if it shows its counts.
    void compareCounts(const DriverSnapshot& model);
    uint64_t differences() const { return mDifferences; }

  private:
    std::atomic<uint64_t> mDifferences = 0;
};

}  // namespace desk
