/*
 * velk-tuning check.
 */
#pragma once

#include "tune/TuneOptions.h"

namespace desk {

// Returns the exit status. Throws std::exception when the subcommand cannot go on.
int check(const CheckOptions& options);

}  // namespace desk
