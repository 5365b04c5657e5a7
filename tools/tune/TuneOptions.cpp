#include "tune/TuneOptions.h"

#include <CLI/CLI.hpp>

#include "common/CommonOptions.h"

namespace desk {

namespace {

constexpr const char* kExamples = R"(
Examples:
  Is everything in a folder as it has to be, and does it fit a recording?
    velk-tuning check tuning capture-5s.jsonl
  Every subcommand has its own help:
    velk-tuning check --help
)";

constexpr const char* kCheckHelp = R"(
A fault is what velk-replay refuses too; check names all of them, not the first. A warning is what is
legal and probably wrong: levels that decrease along the clusters, variants, targets and controls
that can never be chosen, tasks with a figure of 0. With sessions it is also a task that is started
and not known, a category without a control, an anchor without a target, and the target of an anchor
that is never passed.

Examples:
  velk-tuning check tuning
  velk-tuning check tuning capture-5s.jsonl other-capture.jsonl
  In a build, where a warning is to fail:
    velk-tuning check tuning --strict

Exit status:
  0    no fault; there may be warnings
  1    warnings, with --strict
  2    faults, bad usage, or a file that cannot be read or written
)";

CLI::App& addCheck(CLI::App& app, CheckOptions& options) {
    CLI::App& check = *app.add_subcommand("check", "Finds what is wrong with tuning data");
    check.footer(kCheckHelp);
    check.add_option("DIR", options.folder, "Folder with platform.json and its companions")
            ->required();
    check.add_option("SESSION", options.sessions,
                     "Sessions that the data is for; - is standard input");
    check.add_flag("--strict", options.isStrict, "Exit with 1 when there are warnings");
    return check;
}

}  // namespace

std::variant<TuneOptions, int> parseTuneOptions(int argc, const char* const* argv) {
    CheckOptions check;
    CLI::App app{"Judges tuning data, alone or against recorded sessions.", "velk-tuning"};
    app.footer(kExamples);
    app.set_version_flag("--version", "velk-tuning " VELK_VERSION);
    app.require_subcommand(1);
    addCheck(app, check);
    if (const std::optional<int> status = parseCommandLine(app, argc, argv)) {
        return *status;
    }
    return TuneOptions(check);
}

}  // namespace desk
