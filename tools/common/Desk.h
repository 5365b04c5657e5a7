/*
 * Sets up the desk as the command line asks.
 */
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/CommonOptions.h"
#include "common/OutputFiles.h"

namespace desk {

// Puts tuning data, properties and the faults of the driver in place. Throws std::runtime_error,
// whose text names the file at fault. Warns of properties that the library does
// not know, and of values that it does not take, in the name of the program.
void setUpDesk(std::string_view program, const CommonOptions& options);

// Why setting a property has no effect, with its name; empty when it may have one.
std::string doubtAboutProperty(const std::string& name, const std::string& value);

// What setUpDesk reads.
std::vector<NamedFile> inputFilesOf(const CommonOptions& options);
// What Outputs writes, the standard streams among it.
std::vector<NamedFile> outputFilesOf(const CommonOptions& options);

}  // namespace desk
