/*
 * The Android log on the desk.
 */
#pragma once

#include <memory>

#include "log/LineSink.h"

namespace desk {

// From now on every message of every priority becomes a line "seconds.micros tid P tag: text" of
// the sink; null drops them, which is how the desk starts.
void setAndroidLog(std::shared_ptr<LineSink> sink);

}  // namespace desk
