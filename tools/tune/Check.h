/*
 * velk-tuning check.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception for what ends it.
int check(const CheckOptions& options);

}  // namespace desk
