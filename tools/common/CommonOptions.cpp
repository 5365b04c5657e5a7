#include "common/CommonOptions.h"

#include <cutils/properties.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <sstream>
#include <stdexcept>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "log/LineSink.h"

namespace desk {

const char* const kCommonOptionsHelp = R"(
Rows that are printed (--filter), items with commas between them; items of one kind are alternatives:
  command=NAME             this command (a number such as 29, or a name: taskStart, open, close)
  thread=NAME              this thread
  task=TASK                calls about this task, a number or the name that it registered with
  failures                 what was refused, and calls that returned -1

Faults of the driver (--driver), items with commas between them:
  absent                   there is no control node
  open=ERRNO[*TIMES]       opening the node fails
  COMMAND=ERRNO[*TIMES]    a command (a number such as 29, or a name: taskStart) is refused
  slow=[COMMAND:]DURATION  a command, or every one, takes that much longer (us, ms or s, up to 10s)
)";

namespace {

PrintFormat parseFormat(const std::string& text) {
    if (text == "table") {
        return PrintFormat::Table;
    }
    if (text == "jsonl") {
        return PrintFormat::JsonLines;
    }
    throw CLI::ValidationError("--format", fmt::format("\"{}\" is neither table nor jsonl", text));
}

std::pair<std::string, std::string> parseProperty(const std::string& text) {
    const size_t place = text.find('=');
    if (place == std::string::npos || place == 0) {
        throw CLI::ValidationError("--property",
                                   fmt::format("\"{}\" is not of the form NAME=VALUE", text));
    }
    std::string value = text.substr(place + 1);
    if (value.size() >= PROPERTY_VALUE_MAX) {
        throw CLI::ValidationError("--property",
                                   fmt::format("the value of \"{}\" is longer than {} characters",
                                               text.substr(0, place), PROPERTY_VALUE_MAX - 1));
    }
    return {text.substr(0, place), std::move(value)};
}

RowFilter parseFilter(const std::string& text) {
    try {
        return RowFilter::parse(text);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--filter", error.what());
    }
}

InjectedFaults parseInjectedFaults(const std::string& text) {
    try {
        return InjectedFaults::parse(text);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--driver", error.what());
    }
}

// An empty name is what a variable leaves that is not set. An empty list of faults is one.
void refuseEmptyTexts(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& text : option->results()) {
            if (text.empty() && option->get_name() != "--driver") {
                throw CLI::ValidationError(option->get_name(), "empty, expected a text");
            }
        }
    }
    for (const CLI::App* subcommand : app.get_subcommands()) {
        refuseEmptyTexts(*subcommand);
    }
}

// What is missing may have been mistyped, so what is too much is named as well.
void sayWhatWasNotExpected(const CLI::App& app, const CLI::ParseError& error) {
    const auto missing = static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::vector<std::string> words = app.remaining(true);
    if (error.get_exit_code() == missing && !words.empty()) {
        sayError(app.get_name(), CLI::ExtrasError({words.rbegin(), words.rend()}).what());
    }
}

}  // namespace

std::string refuseStandardOutput(const std::string& file) {
    return file == "-" ? "standard output has the summary, expected the name of a file" : "";
}

void addCommonOptions(CLI::App& app, CommonOptions& options) {
    using Text = std::string;
    app.add_option("--tuning", options.tuning, "Folder with platform.json and its companions")
            ->type_name("DIR");
    app.add_option_function<Text>(
               "--format", [&options](const Text& text) { options.format = parseFormat(text); },
               "How commands and summary are printed, by default a table")
            ->type_name("table|jsonl");
    app.add_flag("-q,--quiet", options.isQuiet, "Print the summary alone");
    app.add_option_function<Text>(
               "--filter", [&options](const Text& text) { options.filter = parseFilter(text); },
               "Print these rows alone, see below")
            ->type_name("SPEC");
    app.add_option("--trace", options.traceFile, "Write a trace for Perfetto or chrome://tracing")
            ->type_name("FILE")
            ->check(refuseStandardOutput);
    app.add_option("--report", options.reportFile,
                   "Write a page with timeline, charts and all figures, to open in a browser")
            ->type_name("FILE")
            ->check(refuseStandardOutput);
    app.add_option("--log", options.logFile,
                   "Write the library's Android log, every level; - is standard error")
            ->type_name("FILE");
    app.add_option("--ulog", options.ulogFile,
                   "Write what goes to the camera stack's logger; - is standard error")
            ->type_name("FILE");
    app.add_option_function<std::vector<Text>>(
               "--property",
               [&options](const std::vector<Text>& texts) {
                   for (const Text& text : texts) {
                       options.properties.push_back(parseProperty(text));
                   }
               },
               "Set a system property first; may be repeated")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false);
    app.add_option_function<Text>(
               "--driver",
               [&options](const Text& text) { options.injectedFaults = parseInjectedFaults(text); },
               "What the driver does wrong, see below")
            ->type_name("SPEC");
}

std::optional<int> parseCommandLine(CLI::App& app, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
        refuseEmptyTexts(app);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::ostringstream help;
        if (app.exit(error, help, help) != 0) {
            sayWhatWasNotExpected(app, error);
            sayError(app.get_name(), error.what());
            sayError(app.get_name(), fmt::format("try {} --help", app.get_name()));
            return kExitBadInput;
        }
        const auto output = LineSink::toStandardOutput();
        output->write(help.str());
        if (!output->close() && !output->isAbandoned()) {
            sayError(app.get_name(), describeFailure(*output));
            return kExitBadInput;
        }
        return kExitAsExpected;
    }
}

}  // namespace desk
