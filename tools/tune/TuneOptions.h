/*
 * The command line of velk-tuning.
 */
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace desk {

struct CheckOptions {
    std::string folder;
    std::vector<std::string> sessions;
    bool isStrict = false;
};

using TuneOptions = std::variant<CheckOptions>;

// Where the command line asks for an end, the exit status; what there is to say is said.
std::variant<TuneOptions, int> parseTuneOptions(int argc, const char* const* argv);

}  // namespace desk
