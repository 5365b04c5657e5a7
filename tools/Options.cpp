#include "Options.h"

#include <android-base/parsedouble.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "session/CallTable.h"

namespace desk {

namespace {

constexpr const char* kExamples = R"(
Examples:
  Play the sample and show every command that the driver receives:
    velk-replay capture-5s.jsonl --tuning tuning
  The summary alone, in recorded time, with a trace to open in Perfetto:
    velk-replay capture-5s.jsonl --tuning tuning --quiet --speed 1 --trace trace.json
  A page with timeline, charts and all figures, to open in a browser:
    velk-replay capture-5s.jsonl --tuning tuning --quiet --report page.html
  A driver that refuses the first three task registrations and is slow to take task starts:
    velk-replay capture-5s.jsonl --tuning tuning --driver '28=EINVAL*3, slow=taskStart:50us'
  A device without the control node, with everything that the library says about it:
    velk-replay capture-5s.jsonl --tuning tuning --driver absent --log - \
        --property vendor.debug.velk.debuglog=1
  The driver of this machine's kernel, and every answer that is not the model's:
    velk-replay capture-5s.jsonl --tuning tuning --quiet --node real
)";

constexpr const char* kExitStatus = R"(
Exit status:
  0    every call succeeded, or failed because of an injected fault
  1    calls failed unexpectedly, the driver found fault with a command, or the kernel's driver
       answered otherwise than the model
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

bool parseNode(const std::string& text) {
    if (text != "model" && text != "real") {
        throw CLI::ValidationError("--node", fmt::format("\"{}\" is neither model nor real", text));
    }
    return text == "real";
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
    app.add_option_function<std::string>(
               "--node",
               [&options](const std::string& text) { options.isOnKernelNode = parseNode(text); },
               "Who answers: the model, by default, or the kernel's node, with the model watching")
            ->type_name("model|real");
    app.add_flag_callback(
            "--calls", [] { throw CLI::CallForVersion(describeCalls(), 0); },
            "Print the calls that a session can hold, with their members, and exit");
    addCommonOptions(app, options.common);
    app.get_option("--tuning")->required();

    if (const std::optional<int> status = parseCommandLine(app, argc, argv)) {
        return *status;
    }
    if (options.isOnKernelNode && app.count("--driver") > 0) {
        sayError("velk-replay",
                 "--driver: no fault can be injected into a real node, expected no "
                 "--node real beside it");
        return kExitBadInput;
    }
    return options;
}

}  // namespace desk
