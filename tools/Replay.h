/*
 * One replay from the options to the exit status.
 */
#pragma once

#include "Options.h"

namespace desk {

// Sets up the desk, plays the session, prints, and returns the exit status. Throws std::exception
// when a file cannot be read or written.
int replay(const Options& options);

}  // namespace desk
