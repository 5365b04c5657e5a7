/*
 * velk-tuning suggest.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception when the subcommand cannot go on.
int suggest(const SuggestOptions& options);

}  // namespace desk
