/*
 * velk-tuning suggest.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception for what ends it.
int suggest(const SuggestOptions& options);

}  // namespace desk
