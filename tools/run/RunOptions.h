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

// Returns an exit status when the tool is to end, for help or an error; its text is printed then.
std::variant<RunOptions, int> parseRunOptions(int argc, const char* const* argv);

}  // namespace desk
