/*
 * How the playing of a session ended.
 */
#pragma once

#include <optional>
#include <string>

namespace desk {

struct PlayResult {
    bool isStopped = false;
    std::optional<std::string> error;   // why it could not be played to its end
    std::optional<std::string> cutOff;  // where the recording breaks off
};

}  // namespace desk
