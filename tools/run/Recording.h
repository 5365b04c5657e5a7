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

// Cuts off the space that the recorder has reserved and a program that was killed has left, unless
// another process records into the file. Returns the number of calls in it, 0 when there is no such
// file. Throws std::system_error.
uint64_t endRecording(const std::string& path);

}  // namespace desk
