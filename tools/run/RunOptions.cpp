#include "run/RunOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "run/Program.h"

namespace desk {

namespace {

constexpr const char* kProgram = "velk-run";

constexpr const char* kExamples = R"(
Examples:
  What a program tells the driver, as it does so, and a summary when it ends:
    velk-run -- ./camera-service
  The table in a file beside the program's own output, and a trace to open in Perfetto:
    velk-run --output table.txt --trace trace.json -- ./camera-service
  The summary alone, with tuning data of one's own and a driver that is slow:
    velk-run --quiet --tuning my-tuning --driver 'slow=50us' -- ./camera-service --frames 100
  A session to be replayed, and its replay:
    velk-run --quiet --record session.jsonl -- ./camera-service
    velk-replay session.jsonl --tuning my-tuning
)";

constexpr const char* kWhatIsSeen = R"(
The program has to be linked dynamically to libvelkperfctrl, as the installed package does it. The
desk takes the place of the device for it: control node, properties, log, trace and tuning data. Of
a program that starts others, the first process that uses the library is followed; any other is
left alone, and a line says so. A program that closes descriptors which are not its own is seen all
the same. The program is slowed down to the pace at which its calls are printed.
)";

constexpr const char* kExitStatus = R"(
Exit status:
  that of the program. velk-run ends by the signal that ended the program, and passes SIGHUP,
  SIGINT, SIGQUIT and SIGTERM on to it; the summary is printed in any case. And besides:
  125  bad usage, a malformed tuning file, a file that cannot be written, calls that could not be
       seen or recorded, a program that nothing can be preloaded into (statically linked,
       set-user-id, with file capabilities)
  126  the program cannot be executed
  127  there is no such program)";

// The usage line that CLI11 makes lacks the part after "--".
class UsageWithProgram : public CLI::Formatter {
  public:
    std::string make_usage(const CLI::App* /*app*/, std::string /*name*/) const override {
        return "Usage: velk-run [OPTIONS] -- PROGRAM [ARGUMENTS]\n";
    }
};

}  // namespace

std::variant<RunOptions, int> parseRunOptions(int argc, const char* const* argv) {
    RunOptions options;
    options.common.isLive = true;
    CLI::App app{
            "Runs a program that uses libvelkperfctrl, and prints what the driver receives from it "
            "while it runs.",
            kProgram};
    app.formatter(std::make_shared<UsageWithProgram>());
    app.footer(std::string(kExamples) + kWhatIsSeen + kCommonOptionsHelp + kExitStatus);
    app.set_version_flag("--version", "velk-run " VELK_VERSION);
    app.add_option("--record", options.recording, "Write the calls as a session, for velk-replay")
            ->type_name("FILE")
            ->check(refuseStandardOutput);
    app.add_option("-o,--output", options.common.outputFile,
                   "Where rows and summary go, by default standard output; - is the same")
            ->type_name("FILE");
    addCommonOptions(app, options.common);
    app.get_option("--tuning")
            ->description("Folder with platform.json and its companions, by default the sample's");

    const char* const* const end = argv + argc;
    const char* const* const mark =
            std::find_if(argv, end, [](std::string_view word) { return word == "--"; });
    if (const auto status = parseCommandLine(app, static_cast<int>(mark - argv), argv)) {
        return *status == kExitAsExpected ? kExitAsExpected : kExitToolFailed;
    }
    if (end - mark < 2) {
        sayError(kProgram, "no program, expected -- PROGRAM [ARGUMENTS] after the options");
        sayError(kProgram, "try velk-run --help");
        return kExitToolFailed;
    }
    if (options.common.outputFile == "-") {
        options.common.outputFile.reset();
    }
    options.program.assign(mark + 1, end);
    return options;
}

}  // namespace desk
