/*
 * A session on the kernel's node: reports at once what its driver answers otherwise than the model.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "driver/DriverSnapshot.h"

namespace desk {

// At most one per process, created before anything opens the node.
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
