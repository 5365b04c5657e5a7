/*
 * velk-tuning compare.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception when the subcommand cannot go on.
int compare(const CompareOptions& options);

}  // namespace desk
