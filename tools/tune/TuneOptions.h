/*
 * The command line of velk-tuning.
 */
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace desk {

struct CheckOptions {
    std::string folder;
    std::vector<std::string> sessions;
    bool isStrict = false;
};

struct CompareOptions {
    std::vector<std::string> folders;  // one or two
    std::vector<std::string> sessions;
};

struct SuggestOptions {
    std::vector<std::string> sessions;
    int percentile = 90;
    std::optional<std::string> base;
    std::string output;
};

using TuneOptions = std::variant<CheckOptions, CompareOptions, SuggestOptions>;

// Returns an exit status when the tool is to end, for help or an error; its text is printed then.
std::variant<TuneOptions, int> parseTuneOptions(int argc, const char* const* argv);

}  // namespace desk
