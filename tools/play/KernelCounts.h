/*
 * The counts of commands that the driver in the kernel shows, beside those of the model.
 */
#pragma once

#include <sys/types.h>

#include <istream>
#include <string>
#include <vector>

#include "driver/DriverSnapshot.h"

namespace desk {

// What differs between the lines of a process in the driver's state and the model, in words.
std::vector<std::string> differentCounts(std::istream& state, pid_t process,
                                         const DriverSnapshot& model);

}  // namespace desk
