#include "CountedMemory.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

#include "support/Recorder.h"

namespace {

size_t gLiveBytes = 0;
uint64_t gAllocations = 0;

}  // namespace

size_t liveBytes() {
    return gLiveBytes;
}

uint64_t allocations() {
    return gAllocations;
}

void* operator new(size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    gAllocations += fake::tInLibrary ? 1 : 0;
    gLiveBytes += malloc_usable_size(block);
    return block;
}
void operator delete(void* block) noexcept {
    gLiveBytes -= malloc_usable_size(block);
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    operator delete(block);
}
