/*
 * Runs a tool with another driver in the place of the kernel's.
 */
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "support/Preload.h"

namespace desk {

struct NodeOutcome {
    int status = -1;
    std::string output;  // standard error as well
};

// `libraries` are preloaded, in this order. `environment` are NAME=VALUE words.
inline NodeOutcome runOnNode(const std::vector<std::string>& libraries,
                             const std::string& environment, const std::string& command) {
    std::string line = "env " + environment;
    for (const std::string& variable : preloadVariables(libraries)) {
        line += " '" + variable + "'";
    }
    line += " " + command + " 2>&1";
    NodeOutcome outcome;
    FILE* const pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) {
        return outcome;
    }
    std::array<char, 4096> part = {};
    for (size_t size = 0; (size = fread(part.data(), 1, part.size(), pipe)) > 0;) {
        outcome.output.append(part.data(), size);
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

}  // namespace desk
