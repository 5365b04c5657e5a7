/*
 * velk-tuning compare.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception for what ends it.
int compare(const CompareOptions& options);

}  // namespace desk
