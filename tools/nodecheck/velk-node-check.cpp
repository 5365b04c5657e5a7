/*
 * velk-node-check: judges whatever driver answers at the control node. It needs nothing of the
 * desk, so that it can be linked statically and run on a device.
 */
#include <fmt/format.h>
#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "nodecheck/Report.h"

namespace {

using desk::LineSink;
using nodecheck::Report;

constexpr const char* kProgram = "velk-node-check";

constexpr const char* kHelp =
        R"(Judges the driver behind /proc/velk/velk_ioctl: sends it every valid record in every
legal order, and what it has to refuse, and lets threads and processes die meanwhile.

Usage: velk-node-check [OPTION...]

  -h, --help        Print this help and exit
      --version     Print the version and exit
      --format FORMAT
                    text, the default: a line for each check, and what was wrong; or json:
                    one JSON document
      --seed N      Of the random commands, 0 to 4294967295, by default 1
      --commands N  How many random commands, by default 100000
      --check NAME  This check alone, by the name that the output gives it; may be repeated
      --strict      Lenient answers count as wrong: what a driver may take although the
                    documents say that it is refused

Run it as a user who may open the node, while nothing else uses it: sessions of other processes
are not touched. It keeps nothing, and its own session ends with it.

Examples:
  On a device, or on a machine with the driver loaded:
    velk-node-check
    velk-node-check --strict --format json >verdict.json
  Ten times as many random commands, and others than the last time:
    velk-node-check --commands 1000000 --seed 7
  What becomes of threads and processes that die, nothing else:
    velk-node-check --check dyingThreads --check dyingProcesses
  The desk's model of a driver, without any driver:
    LD_PRELOAD=libvelknode.so velk-node-check

Exit status:
  0  the driver answers as documented, or leniently
  1  it does not, or with --strict it is lenient
  2  bad usage, the node cannot be opened, the machine has no process or thread to check with,
     or the output cannot be written
)";

struct Options {
    nodecheck::Settings settings;
    bool isStrict = false;
    bool isJson = false;
    std::vector<std::string_view> checks;  // their names; all when there is none
};

// The exit status instead of options when the program is to end now.
using Parsed = std::variant<Options, int>;

int misused(const std::string& problem) {
    desk::sayError(kProgram, problem);
    desk::sayError(kProgram, "try velk-node-check --help");
    return desk::kExitBadInput;
}

// Says why not all could be written. A reader that has gone has read what it wanted.
bool isWritten(LineSink& output) {
    if (output.close() || output.error() == EPIPE) {
        return true;
    }
    desk::sayError(kProgram, desk::describeFailure(output));
    return false;
}

int print(std::string_view text) {
    const auto output = LineSink::toStandardOutput();
    output->write(text);
    return isWritten(*output) ? desk::kExitAsExpected : desk::kExitBadInput;
}

template <typename Number>
bool parseNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

std::optional<std::string> parseFormat(std::string_view text, Options& options) {
    options.isJson = text == "json";
    if (text != "json" && text != "text") {
        return fmt::format("--format: found \"{}\", expected text or json", text);
    }
    if (options.isJson && !nodecheck::kHasJson) {
        return "--format: this program was built without JSON, expected text";
    }
    return std::nullopt;
}

std::optional<std::string> parseCheck(std::string_view name, Options& options) {
    std::string known;
    for (const nodecheck::Check& check : nodecheck::allChecks()) {
        if (name == check.name) {
            options.checks.push_back(name);
            return std::nullopt;
        }
        known += fmt::format(" {}", check.name);
    }
    return fmt::format("--check: found \"{}\", expected one of:{}", name, known);
}

bool isChosen(const nodecheck::Check& check, const Options& options) {
    return options.checks.empty() || std::ranges::count(options.checks, check.name) > 0;
}

template <typename Number>
std::optional<std::string> parseNumberOption(const char* name, std::string_view text,
                                             Number& number) {
    if (parseNumber(text, number)) {
        return std::nullopt;
    }
    return fmt::format("{}: found \"{}\", expected a whole number from 0 to {}", name, text,
                       std::numeric_limits<Number>::max());
}

Parsed parseOptions(int argc, char** argv) {
    enum Option { kVersion = 256, kFormat, kSeed, kCommands, kCheck, kStrict };
    constexpr int kHelpLetter = 'h';
    constexpr option kLongOptions[] = {{"help", no_argument, nullptr, kHelpLetter},
                                       {"version", no_argument, nullptr, kVersion},
                                       {"format", required_argument, nullptr, kFormat},
                                       {"seed", required_argument, nullptr, kSeed},
                                       {"commands", required_argument, nullptr, kCommands},
                                       {"check", required_argument, nullptr, kCheck},
                                       {"strict", no_argument, nullptr, kStrict},
                                       {}};
    Options options;
    std::optional<std::string> problem;
    opterr = 0;
    int letter = 0;
    while (!problem && (letter = getopt_long(argc, argv, ":h", kLongOptions, nullptr)) != -1) {
        switch (letter) {
            case kHelpLetter:
                return print(kHelp);
            case kVersion:
                return print("velk-node-check " VELK_VERSION "\n");
            case kFormat:
                problem = parseFormat(optarg, options);
                break;
            case kSeed:
                problem = parseNumberOption("--seed", optarg, options.settings.seed);
                break;
            case kCommands:
                problem = parseNumberOption("--commands", optarg, options.settings.randomCommands);
                break;
            case kCheck:
                problem = parseCheck(optarg, options);
                break;
            case kStrict:
                options.isStrict = true;
                break;
            case ':':
                problem = fmt::format("{}: needs a value", argv[optind - 1]);
                break;
            default:
                problem = fmt::format("{}: unknown option", argv[optind - 1]);
                break;
        }
    }
    if (!problem && optind < argc) {
        problem = fmt::format("{}: found an argument, expected options alone", argv[optind]);
    }
    return problem ? Parsed(misused(*problem)) : Parsed(options);
}

int judge(const Options& options) {
    if (const int error = nodecheck::NodeFile().error()) {
        desk::sayError(kProgram, fmt::format("{}: {}", VELK_NODE_PATH, std::strerror(error)));
        return desk::kExitBadInput;
    }
    const auto output = LineSink::toStandardOutput();
    Report report = {options.settings, nodecheck::hasStateFile(), options.isStrict, {}};
    for (const nodecheck::Check& check : nodecheck::allChecks()) {
        if (!isChosen(check, options)) {
            continue;
        }
        report.results.push_back({&check, nodecheck::runCheck(check, options.settings)});
        if (!options.isJson) {
            output->write(nodecheck::formatResult(report.results.back()));
            output->flush();
        }
    }
    output->write(options.isJson ? nodecheck::formatJson(report) + "\n"
                                 : nodecheck::formatEnd(report));
    if (!isWritten(*output)) {
        return desk::kExitBadInput;
    }
    return report.isPassed() ? desk::kExitAsExpected : desk::kExitUnexpected;
}

}  // namespace

int main(int argc, char** argv) {
    desk::prepareStandardStreams();
    try {
        const Parsed options = parseOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return judge(std::get<Options>(options));
    } catch (const std::exception& error) {
        desk::sayError(kProgram, error.what());
        return desk::kExitBadInput;
    }
}
