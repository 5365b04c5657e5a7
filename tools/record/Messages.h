/*
 * Messages of the recorder.
 */
#pragma once

#include <string>

namespace desk {

// Writes one line to standard error, on a device also to the log. Keeps errno.
void say(const std::string& message) noexcept;

}  // namespace desk
