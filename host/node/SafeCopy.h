/*
 * A copy of a record that a program handed over, which may point anywhere.
 */
#pragma once

#include <array>
#include <cstddef>

#include "foundation/CommandRecords.h"

namespace desk {

class SafeCopy {
  public:
    // Of `size` bytes; more than the largest record are cut.
    SafeCopy(const void* source, size_t size);

    // Null when the bytes cannot be read.
    const void* get() const { return mRecord; }

  private:
    alignas(8) std::array<std::byte, VELK_LARGEST_RECORD> mBytes;
    const void* mRecord = nullptr;
};

}  // namespace desk
