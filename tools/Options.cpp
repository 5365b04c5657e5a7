#include "Options.h"

#include <cutils/properties.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <stdexcept>

#include "ExitStatus.h"

namespace desk {

namespace {

constexpr const char* kExamples = R"(
Examples:
  Play the sample and show every command that the driver receives:
    velk-replay capture-5s.jsonl --tuning tuning
  The summary alone, in recorded time, with a trace to open in Perfetto:
    velk-replay capture-5s.jsonl --tuning tuning --quiet --speed 1 --trace trace.json
  A driver that refuses the first three task registrations and is slow to take task starts:
    velk-replay capture-5s.jsonl --tuning tuning --driver '28=EINVAL*3, slow=taskStart:50us'
  A device without the control node, with everything that the library says about it:
    velk-replay capture-5s.jsonl --tuning tuning --driver absent --log - \
        --property vendor.debug.velk.debuglog=1

InjectedFaults (--driver), items with commas between them:
  absent                   there is no control node
  open=ERRNO[*TIMES]       opening the node fails
  COMMAND=ERRNO[*TIMES]    a command (27 to 38, or a name such as taskStart) is refused
  slow=[COMMAND:]DURATION  a command, or every one, takes that much longer (us, ms or s, up to 10s)

Exit status:
  0  every call succeeded, or failed as the driver was told to
  1  calls failed unexpectedly, or the driver found fault with a command
  2  bad usage, a malformed session or tuning file, or a file that cannot be read or written
  130  interrupted; what was played so far is reported)";

std::optional<double> parseSpeed(const std::string& text) {
    if (text == "max") {
        return std::nullopt;
    }
    double speed = 0;
    if (!CLI::detail::lexical_cast(text, speed) || !std::isfinite(speed) || speed <= 0) {
        throw CLI::ValidationError("--speed",
                                   "\"" + text + "\" is neither a number above 0 nor max");
    }
    return speed;
}

PrintFormat parseFormat(const std::string& text) {
    if (text == "table") {
        return PrintFormat::Table;
    }
    if (text == "jsonl") {
        return PrintFormat::JsonLines;
    }
    throw CLI::ValidationError("--format", "\"" + text + "\" is neither table nor jsonl");
}

std::pair<std::string, std::string> parseProperty(const std::string& text) {
    const size_t place = text.find('=');
    if (place == std::string::npos || place == 0) {
        throw CLI::ValidationError("--property", "\"" + text + "\" is not of the form NAME=VALUE");
    }
    std::string value = text.substr(place + 1);
    if (value.size() >= PROPERTY_VALUE_MAX) {
        throw CLI::ValidationError(
                "--property", "the value of \"" + text.substr(0, place) + "\" is longer than " +
                                      std::to_string(PROPERTY_VALUE_MAX - 1) + " characters");
    }
    return {text.substr(0, place), std::move(value)};
}

InjectedFaults parseInjectedFaults(const std::string& text) {
    try {
        return InjectedFaults::parse(text);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--driver", error.what());
    }
}

}  // namespace

std::variant<Options, int> parseOptions(int argc, const char* const* argv) {
    Options options;
    std::string speed = "max";
    std::string format = "table";
    std::string driver;
    std::vector<std::string> properties;

    CLI::App app{
            "Plays a recorded camera session through the library, one thread for every thread "
            "of the recording, and prints what the driver receives.",
            "velk-replay"};
    app.footer(kExamples);
    app.set_version_flag("--version", "velk-replay " VELK_VERSION);
    app.add_option("SESSION", options.session,
                   "Session file, JSON Lines with one call a line; - is standard input")
            ->required();
    app.add_option("--tuning", options.tuning, "Folder with platform.json and its companions")
            ->required()
            ->type_name("DIR");
    app.add_option("--speed", speed,
                   "1 keeps the recorded time, 2 takes half of it; max, the default, does not wait")
            ->type_name("N|max");
    app.add_option("--format", format, "How commands and summary are printed, by default a table")
            ->type_name("table|jsonl");
    app.add_flag("-q,--quiet", options.isQuiet, "Print the summary alone");
    app.add_option("--trace", options.traceFile, "Write a trace for Perfetto or chrome://tracing")
            ->type_name("FILE");
    app.add_option("--log", options.logFile,
                   "Write the library's Android log, every level; - is standard error")
            ->type_name("FILE");
    app.add_option("--ulog", options.ulogFile,
                   "Write what goes to the camera stack's logger; - is standard error")
            ->type_name("FILE");
    app.add_option("--property", properties, "Set a system property first; may be repeated")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false);
    app.add_option("--driver", driver, "What the driver does wrong, see below")->type_name("SPEC");

    try {
        app.parse(argc, argv);
        options.speed = parseSpeed(speed);
        options.format = parseFormat(format);
        options.injectedFaults = parseInjectedFaults(driver);
        for (const std::string& property : properties) {
            options.properties.push_back(parseProperty(property));
        }
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kExitAsExpected : kExitBadInput;
    }
    return options;
}

}  // namespace desk
