/*
 * The Android log on the desk.
 */
#pragma once

#include <memory>
#include <string_view>

#include "log/LineSink.h"

namespace desk {

// From now on every message of every priority becomes a line "seconds.micros tid P tag: text" of
// the sink; null drops them, which is how the desk starts.
void setAndroidLog(std::shared_ptr<LineSink> sink);

// The text of the calling thread's last warning or error since clearProblem(), also while the log
// goes nowhere. It holds until the thread's next message.
std::string_view keptProblem() noexcept;
void clearProblem() noexcept;

}  // namespace desk
