/*
 * A process-wide object whose destructor never runs: threads of the camera service may still call
 * into the library while the process is exiting.
 */
#pragma once

#include "foundation/Visibility.h"

template <typename T>
union VELK_INTERNAL NeverDestroyed {
    constexpr NeverDestroyed() : object() {}
    // A defaulted destructor would be a deleted one.
    ~NeverDestroyed() {}  // NOLINT(modernize-use-equals-default)
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T object;
};
