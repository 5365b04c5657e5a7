/*
 * The options that all tools share which run calls of the library on the desk: tuning data,
 * properties, faults, and outputs.
 */
#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "driver/InjectedFaults.h"
#include "report/CommandPrinter.h"
#include "report/RowFilter.h"

namespace desk {

struct CommonOptions {
    std::string tuning;
    PrintFormat format = PrintFormat::Table;
    bool isQuiet = false;
    bool isLive = false;  // calls are made by another program, which may use the terminal too
    std::optional<std::string> outputFile;  // none: standard output
    RowFilter filter;
    std::optional<std::string> traceFile;
    std::optional<std::string> reportFile;
    std::optional<std::string> logFile;   // "-" is standard error
    std::optional<std::string> ulogFile;  // likewise
    std::vector<std::pair<std::string, std::string>> properties;
    InjectedFaults injectedFaults;
};

// Parsing with `app` writes into `options`, which has to live until then. An invalid value
// throws CLI::ParseError.
void addCommonOptions(CLI::App& app, CommonOptions& options);

// To check options that name an output: what is wrong with "-", empty for any other name.
std::string refuseStandardOutput(const std::string& file);

// What --help says below the options, on those that are added here.
extern const char* const kCommonOptionsHelp;

// Parses the command line, and prints help or an error. Returns the exit status when the tool is to
// end now, and nothing when it is to go on.
std::optional<int> parseCommandLine(CLI::App& app, int argc, const char* const* argv);

}  // namespace desk
