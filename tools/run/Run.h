/*
 * One run of a program from the options to the exit status.
 */
#pragma once

#include "run/RunOptions.h"

namespace desk {

// Runs the program, prints, and returns the exit status; ends the process as the program ended if
// that was by a signal. Throws std::exception when the program cannot be run or observed.
int run(const RunOptions& options);

}  // namespace desk
