#include "Options.h"

#include <android-base/parsedouble.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

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
)";

constexpr const char* kExitStatus = R"(
Exit status:
  0    every call succeeded, or failed as the driver was told to
  1    calls failed unexpectedly, or the driver found fault with a command
  2    bad usage, a malformed session or tuning file, or a file that cannot be read or written
  129  ended by SIGHUP, 130 by Ctrl-C, 143 by SIGTERM; what was played so far is reported)";

std::optional<double> parseSpeed(const std::string& text) {
    if (text == "max") {
        return std::nullopt;
    }
    double speed = 0;
    if (!android::base::ParseDouble(text.c_str(), &speed) || !std::isfinite(speed) || speed <= 0) {
        throw CLI::ValidationError("--speed",
                                   fmt::format("\"{}\" is neither a number above 0 nor max", text));
    }
    return speed;
}

}  // namespace

std::variant<Options, int> parseOptions(int argc, const char* const* argv) {
    Options options;
    CLI::App app{
            "Plays a recorded camera session through the library, one thread for every thread "
            "of the recording, and prints what the driver receives.",
            "velk-replay"};
    app.footer(std::string(kExamples) + kCommonOptionsHelp + kExitStatus);
    app.set_version_flag("--version", "velk-replay " VELK_VERSION);
    app.add_option("SESSION", options.session,
                   "Session file, JSON Lines with one call a line; - is standard input")
            ->required();
    app.add_option_function<std::string>(
               "--speed", [&options](const std::string& text) { options.speed = parseSpeed(text); },
               "1 keeps the recorded time, 2 takes half of it; max, the default, does not wait")
            ->type_name("N|max");
    addCommonOptions(app, options.common);
    app.get_option("--tuning")->required();

    if (const std::optional<int> status = parseCommandLine(app, argc, argv)) {
        return *status;
    }
    return options;
}

}  // namespace desk
