/*
 * The C library's definitions of the functions that this library defines before it.
 */
#pragma once

#include <dlfcn.h>

#include <atomic>

namespace desk {

// The next definition of a function behind this library, looked up on first use. It needs constant
// initialisation alone, so it works from the first moments of the process.
template <typename Function>
class NextDefinition {
  public:
    explicit constexpr NextDefinition(const char* name) : mName(name) {}

    // Null when there is none.
    Function* get() {
        Function* function = mFunction.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mName));
            mFunction.store(function, std::memory_order_relaxed);
        }
        return function;
    }

  private:
    const char* mName;
    std::atomic<Function*> mFunction = nullptr;
};

}  // namespace desk
