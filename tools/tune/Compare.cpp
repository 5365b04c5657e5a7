#include "tune/Compare.h"

#include <fmt/format.h>

#include <stdexcept>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "report/CountText.h"
#include "tune/Differences.h"
#include "tune/DriverView.h"
#include "tune/ToolFiles.h"

namespace desk {

namespace {

using nlohmann::ordered_json;
using TuningPointer = std::shared_ptr<const TuningData>;

// Failed calls are part of the comparison; a message reports them as well.
ordered_json viewOf(const std::string& session, const std::string& folder,
                    const TuningPointer& tuning) {
    DriverView view;
    ordered_json told = replayApart(session, tuning, view);
    if (const auto unexpected = told["unexpected"].get<std::string>(); !unexpected.empty()) {
        sayError("velk-tuning", fmt::format("{} with {}: {}", session, folder, unexpected));
    }
    return told;
}

int compareTunings(const CompareOptions& options) {
    const TuningPointer a = requireTuning(options.folders[0]);
    const TuningPointer b = requireTuning(options.folders[1]);
    std::string text = fmt::format("A: {}\nB: {}\n", options.folders[0], options.folders[1]);
    bool isDifferent = false;
    for (const std::string& session : options.sessions) {
        const ordered_json viewA = viewOf(session, options.folders[0], a);
        const ordered_json viewB = viewOf(session, options.folders[1], b);
        const std::string differences = differencesAtDriver(viewA, viewB);
        isDifferent = isDifferent || !differences.empty();
        text += fmt::format(
                "\n{}\n{}", session,
                differences.empty() ? "  nothing changes at the driver\n" : differences);
    }
    printResult(text);
    return isDifferent ? kExitUnexpected : kExitAsExpected;
}

int compareSessions(const CompareOptions& options) {
    const TuningPointer tuning = requireTuning(options.folders[0]);
    const ordered_json a = viewOf(options.sessions[0], options.folders[0], tuning);
    const ordered_json b = viewOf(options.sessions[1], options.folders[0], tuning);
    printResult(fmt::format("A: {}\nB: {}\n\n{}", options.sessions[0], options.sessions[1],
                            changesBetween(a, b)));
    return kExitAsExpected;
}

}  // namespace

int compare(const CompareOptions& options) {
    const bool areTwoTunings = options.folders.size() == 2;
    if (areTwoTunings ? options.sessions.empty() : options.sessions.size() != 2) {
        throw std::runtime_error(fmt::format(
                "compare: {} with {}, expected two folders and a session, or one folder and two "
                "sessions",
                countOf(options.folders.size(), "folder"),
                countOf(options.sessions.size(), "session")));
    }
    requireFiles(options.sessions);
    keepOutputsFromInputs(options.folders, options.sessions);
    return areTwoTunings ? compareTunings(options) : compareSessions(options);
}

}  // namespace desk
