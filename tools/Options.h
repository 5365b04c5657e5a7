/*
 * The command line of velk-replay.
 */
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "common/CommonOptions.h"

namespace desk {

struct Options {
    std::string session;          // "-" is standard input
    std::optional<double> speed;  // none: as fast as it goes
    bool isOnKernelNode = false;  // else the model answers alone
    CommonOptions common;
};

// The exit status instead, when the tool is to end now: after --help, or after an error, which has
// been printed.
std::variant<Options, int> parseOptions(int argc, const char* const* argv);

}  // namespace desk
