/*
 * What every subcommand of velk-tuning reads and prints.
 */
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace desk {

// Throws std::runtime_error when standard output or standard error goes into a tuning file of one
// of the folders, or into a session.
void keepOutputsFromInputs(const std::vector<std::string>& folders,
                           const std::vector<std::string>& sessions);

// Writes to standard output, with control characters escaped in every line. Throws
// std::runtime_error when it cannot be written in full; that its reader has gone is no fault.
void printResult(std::string_view text);

}  // namespace desk
