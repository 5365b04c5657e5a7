#include "tune/TuneOptions.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <system_error>

#include "common/CommonOptions.h"

namespace desk {

namespace {

constexpr const char* kExamples = R"(
Examples:
  Is everything in a folder as it has to be, and does it fit a recording?
    velk-tuning check tuning capture-5s.jsonl
  Which targets does it suggest, and what do they change at the driver?
    velk-tuning suggest capture-5s.jsonl --base tuning -o better
    velk-tuning compare tuning better capture-5s.jsonl
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

constexpr const char* kCompareHelp = R"(
With two folders, every session is played under both tunings. Shown are the registrations, targets,
merged controls and critical spans that reach the driver differently, and the counts of runs and
passes over their target that differ, with A for the first folder and B for the second.

With one folder and two sessions, both are played under it. Shown is how run times, anchors and
boosts changed from session A to session B: the change of the median, beside the spread, which is the
larger distance from median to 90th percentile. A change of less than the spread may be chance.

Examples:
  velk-tuning compare tuning better capture-5s.jsonl
  velk-tuning compare tuning before.jsonl after.jsonl

Exit status:
  0    nothing changes at the driver; or two sessions were compared
  1    something changes at the driver
  2    bad usage, malformed tuning data or session, or a file that cannot be read or written
)";

constexpr const char* kSuggestHelp = R"(
A target is the percentile of the recorded times, rounded up to steps of 100 us, above 100 ms of
1 ms, above 1 s of 10 ms. What the base has is kept otherwise. A task or anchor with too few times for
the percentile is left alone: 90 needs 10 of them, 99 needs 100. A task that the base does not know
is added with uclamp 512 and a name that is its number; without a base, everything is.

DIR is made whole or not at all, and must be new or empty.

Examples:
  velk-tuning suggest capture-5s.jsonl --base tuning -o better
  velk-tuning suggest monday.jsonl tuesday.jsonl --base tuning --percentile 99 -o better

Exit status:
  0    DIR was written
  1    there is nothing to suggest, and nothing was written
  2    bad usage, malformed tuning data or session, or a file that cannot be read or written
)";

void addCheck(CLI::App& app, CheckOptions& options) {
    CLI::App& check = *app.add_subcommand("check", "Finds what is wrong with tuning data");
    check.footer(kCheckHelp);
    check.add_option("DIR", options.folder, "Folder with platform.json and its companions")
            ->required();
    check.add_option("SESSION", options.sessions,
                     "Sessions to check the data against; - is standard input");
    check.add_flag("--strict", options.isStrict, "Exit with 1 when there are warnings");
}

// The second word is a folder of tuning data or a session.
void addCompare(CLI::App& app, CompareOptions& options, std::vector<std::string>& words) {
    CLI::App& compare = *app.add_subcommand(
            "compare", "Shows what changes between two tunings, or between two sessions");
    compare.footer(kCompareHelp);
    compare.add_option("DIR", options.folders.emplace_back(), "Folder with tuning data")
            ->required();
    compare.add_option("DIR_OR_SESSION", words, "A second folder and sessions, or two sessions")
            ->required();
}

void addSuggest(CLI::App& app, SuggestOptions& options) {
    CLI::App& suggest = *app.add_subcommand("suggest", "Suggests targets from recorded sessions");
    suggest.footer(kSuggestHelp);
    suggest.add_option("SESSION", options.sessions, "Sessions to learn from")->required();
    suggest.add_option("--percentile", options.percentile,
                       "Percentage of times that are to meet the target, 1 to 99; default 90")
            ->check(CLI::Range(1, 99));
    suggest.add_option("--base", options.base, "Folder with the tuning data to start from")
            ->type_name("DIR");
    suggest.add_option("-o,--output", options.output, "Folder to write")
            ->type_name("DIR")
            ->required();
}

void sortWords(const std::vector<std::string>& words, CompareOptions& options) {
    std::error_code ignored;  // an unreadable path is reported when it is read
    const bool isFolder = !words.empty() && std::filesystem::is_directory(words.front(), ignored);
    options.folders.insert(options.folders.end(), words.begin(), words.begin() + isFolder);
    options.sessions.assign(words.begin() + isFolder, words.end());
}

}  // namespace

std::variant<TuneOptions, int> parseTuneOptions(int argc, const char* const* argv) {
    CheckOptions check;
    CompareOptions compare;
    std::vector<std::string> words;
    SuggestOptions suggest;
    CLI::App app{"Judges tuning data against recorded sessions, compares it and suggests targets.",
                 "velk-tuning"};
    app.footer(kExamples);
    app.set_version_flag("--version", "velk-tuning " VELK_VERSION);
    app.require_subcommand(1);
    addCheck(app, check);
    addCompare(app, compare, words);
    addSuggest(app, suggest);
    if (const std::optional<int> status = parseCommandLine(app, argc, argv)) {
        return *status;
    }
    if (app.got_subcommand("suggest")) {
        return TuneOptions(suggest);
    }
    if (app.got_subcommand("compare")) {
        sortWords(words, compare);
        return TuneOptions(compare);
    }
    return TuneOptions(check);
}

}  // namespace desk
