/*
 * What every subcommand of velk-tuning reads and prints.
 */
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tuning/TuningLoader.h"

namespace desk {

// Throws std::runtime_error when standard output or standard error is a tuning file of one of the
// folders, or a session.
void keepOutputsFromInputs(const std::vector<std::string>& folders,
                           const std::vector<std::string>& sessions);

// Loads the data of a folder. Throws std::runtime_error with everything that the loader refuses.
std::shared_ptr<const TuningData> requireTuning(const std::string& folder);
// The texts of the files of such a folder.
TuningTexts requireTexts(const std::string& folder);
// Throws std::runtime_error for standard input, which can be read only once.
void requireFiles(const std::vector<std::string>& sessions);

// Writes to standard output, with control characters escaped in every line. Throws
// std::runtime_error when it cannot be written in full; a closed pipe is no error.
void printResult(std::string_view text);

}  // namespace desk
