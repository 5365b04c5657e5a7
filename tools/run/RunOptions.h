/*
 * The command line of velk-run.
 */
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "common/CommonOptions.h"

namespace desk {

struct RunOptions {
    std::optional<std::string> recording;
    std::vector<std::string> program;  // and its arguments
    CommonOptions common;
};

// Where the command line asks for an end, the exit status; what there is to say is said.
std::variant<RunOptions, int> parseRunOptions(int argc, const char* const* argv);

}  // namespace desk
