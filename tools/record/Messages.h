/*
 * Messages of the recorder.
 */
#pragma once

#include <string>

namespace desk {

// One line, to standard error, and on a device to the log. Keeps errno.
void say(const std::string& message) noexcept;

}  // namespace desk
