/*
 * The file of --record, which the recorder writes inside of the program.
 */
#pragma once

#include <cstdint>
#include <string>

namespace desk {

// Empties the file when there is one: the recorder keeps what it finds in it, so that a process
// which comes later does not overwrite the recording of the first. Throws std::system_error when
// the file could not be written.
void emptyRecording(const std::string& path);

// How many calls stand in it; 0 when it cannot be read.
uint64_t recordedCalls(const std::string& path);

}  // namespace desk
