#include "support/AllocationFaults.h"

#include <cstdlib>
#include <new>

#include "support/Recorder.h"

namespace fake {
namespace {

thread_local int tLeft = 0;

}  // namespace

void failAllocation(int n) {
    tLeft = n;
}

}  // namespace fake

void* operator new(size_t size) {
    if (fake::tInLibrary && fake::tLeft > 0) {
        --fake::tLeft;
        if (fake::tLeft == 0) {
            throw std::bad_alloc();
        }
    }
    void* const memory = std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
// Replaced too: a sanitizer's runtime would otherwise serve these forms itself.
void* operator new[](size_t size) {
    return operator new(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
