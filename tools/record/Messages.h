/*
 * What the recorder has to say, at a place where the user of a program or a device finds it.
 */
#pragma once

#include <string>

namespace desk {

// One line, to standard error, and on a device to the log. Keeps errno.
void say(const std::string& message) noexcept;

}  // namespace desk
