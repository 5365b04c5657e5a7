/*
 * The line that a log message becomes.
 */
#pragma once

#include <string_view>

#include "log/LineSink.h"

namespace desk {

// Writes "seconds.micros tid ORIGIN tag: text" to the sink. Keeps errno. A message is lost when
// there is no memory for its line, because no logger may fail its caller.
void writeLogLine(LineSink& sink, std::string_view origin, const char* tag,
                  const char* text) noexcept;

}  // namespace desk
