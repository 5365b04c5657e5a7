#include "tune/Check.h"

#include <fmt/format.h>

#include <memory>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "report/CountText.h"
#include "tune/SessionSurvey.h"
#include "tune/ToolFiles.h"
#include "tune/TuningWarnings.h"
#include "tuning/TuningLoader.h"

namespace desk {

namespace {

void append(std::vector<std::string>& all, std::vector<std::string> more) {
    all.insert(all.end(), std::make_move_iterator(more.begin()),
               std::make_move_iterator(more.end()));
}

struct Judgement {
    std::vector<std::string> faults;
    std::vector<std::string> warnings;
};

Judgement judge(const CheckOptions& options) {
    Judgement judgement;
    const TuningResult tuning = loadTuning(options.folder, FaultLimit::None);
    if (const auto* error = std::get_if<TuningError>(&tuning)) {
        for (const TuningFault& fault : error->faults) {
            judgement.faults.push_back(fault.text());
        }
    }
    SessionSurvey survey;
    for (const std::string& session : options.sessions) {
        survey.read(session);
    }
    append(judgement.faults, survey.faults());
    if (const auto* data = std::get_if<std::shared_ptr<const TuningData>>(&tuning)) {
        judgement.warnings = warningsAbout(**data, options.folder);
        append(judgement.warnings, warningsAbout(**data, options.folder, survey));
    }
    return judgement;
}

int exitStatus(const Judgement& judgement, bool isStrict) {
    if (!judgement.faults.empty()) {
        return kExitBadInput;
    }
    return isStrict && !judgement.warnings.empty() ? kExitUnexpected : kExitAsExpected;
}

}  // namespace

int check(const CheckOptions& options) {
    keepOutputsFromInputs({options.folder}, options.sessions);
    const Judgement judgement = judge(options);
    std::string text;
    for (const std::string& fault : judgement.faults) {
        text += "fault: " + fault + "\n";
    }
    for (const std::string& warning : judgement.warnings) {
        text += "warning: " + warning + "\n";
    }
    const std::string counts =
            fmt::format("{}: {}, {}", options.folder, countOf(judgement.faults.size(), "fault"),
                        countOf(judgement.warnings.size(), "warning"));
    const int status = exitStatus(judgement, options.isStrict);
    printResult(status == kExitAsExpected ? text + counts + "\n" : text);
    if (status != kExitAsExpected) {
        sayError("velk-tuning", counts);
    }
    return status;
}

}  // namespace desk
