/*
 * Copies of what a program handed over by a pointer that may point anywhere.
 */
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>

#include "foundation/CommandRecords.h"

namespace desk {

// Copies as many bytes as can be read. Returns how many, or -1 when this process may not find out
// and has to trust the pointer. Keeps errno.
ssize_t copyReadable(void* target, const void* source, size_t size);

// Of a record.
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
