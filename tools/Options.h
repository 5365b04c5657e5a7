/*
 * The command line of velk-replay.
 */
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "driver/InjectedFaults.h"
#include "report/CommandPrinter.h"

namespace desk {

struct Options {
    std::string session;
    std::string tuning;
    std::optional<double> speed;  // none: as fast as it goes
    PrintFormat format = PrintFormat::Table;
    bool isQuiet = false;
    std::optional<std::string> traceFile;
    std::optional<std::string> logFile;
    std::optional<std::string> ulogFile;
    std::vector<std::pair<std::string, std::string>> properties;
    InjectedFaults injectedFaults;
};

// Where the command line asks for an end, the exit status; what there is to say is said.
std::variant<Options, int> parseOptions(int argc, const char* const* argv);

}  // namespace desk
