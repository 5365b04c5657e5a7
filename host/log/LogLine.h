/*
 * The line that a log message becomes.
 */
#pragma once

#include <cstdint>
#include <string_view>

#include "log/LineSink.h"

namespace desk {

// From now on lines of the calling thread bear this number instead of the kernel's id of the
// thread, which differs from run to run.
void setLogThread(uint32_t number) noexcept;

// Writes "seconds.micros tid ORIGIN tag: text" to the sink, control characters of
// the text escaped. Keeps errno. A message is lost when there is no memory for its line, because no
// logger may fail its caller.
void writeLogLine(LineSink& sink, std::string_view origin, const char* tag,
                  const char* text) noexcept;

}  // namespace desk
