/*
 * The file of --record, which the recorder writes inside of the program.
 */
#pragma once

#include <cstdint>
#include <string>

namespace desk {

// Empties the file if it exists. The recorder keeps existing content, so that a later process does
// not overwrite the recording of the first. Throws std::system_error when
// the file could not be written.
void emptyRecording(const std::string& path);

// The number of calls in the file; 0 when it cannot be read.
uint64_t recordedCalls(const std::string& path);

}  // namespace desk
