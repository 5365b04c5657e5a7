#include "tune/Suggest.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "tune/NewFolder.h"
#include "tune/Targets.h"
#include "tune/TextTable.h"
#include "tune/ToolFiles.h"

namespace desk {

namespace {

using Align = TextTable::Align;

constexpr const char* kNoVariants = "{\"variants\": []}\n";

TuningDraft draftOf(const SuggestOptions& options) {
    if (!options.base) {
        return TuningDraft({kNoVariants, std::nullopt, std::nullopt});
    }
    return TuningDraft(requireTexts(*options.base));
}

SessionSurvey surveyOf(const std::vector<std::string>& sessions) {
    SessionSurvey survey;
    for (const std::string& session : sessions) {
        survey.read(session);
    }
    if (!survey.faults().empty()) {
        throw std::runtime_error(survey.faults().front());
    }
    return survey;
}

RunTimes recordedTimes(const std::vector<std::string>& sessions, const TuningDraft& complete) {
    const auto tuning = complete.data();
    RunTimes times;
    for (const std::string& session : sessions) {
        RunTimesEvaluation evaluation;
        addRunTimes(replayApart(session, tuning, evaluation), times);
    }
    return times;
}

std::string tableOf(const std::vector<Suggestion>& suggestions, int percentile) {
    TextTable table(
            {Align::Left, Align::Right, Align::Right, Align::Right, Align::Right, Align::Left});
    table.add({"", "times", fmt::format("p{} us", percentile), "target us", "new us", "why"});
    const auto text = [](int64_t us) { return us > 0 ? fmt::format("{}", us) : std::string("-"); };
    for (const Suggestion& each : suggestions) {
        table.add({each.name, fmt::format("{}", each.count),
                   each.count > 0 ? fmt::format("{}", each.percentileUs) : "-", text(each.formerUs),
                   text(each.targetUs), each.reason});
    }
    return table.text();
}

std::vector<NewFile> filesOf(const TuningTexts& texts) {
    std::vector<NewFile> files = {{kPlatformFile, texts.platform}};
    if (texts.customer) {
        files.push_back({kCustomerFile, *texts.customer});
    }
    if (texts.settings) {
        files.push_back({kSettingsFile, *texts.settings});
    }
    return files;
}

}  // namespace

int suggest(const SuggestOptions& options) {
    requireFiles(options.sessions);
    keepOutputsFromInputs(options.base ? std::vector{*options.base} : std::vector<std::string>(),
                          options.sessions);
    requireNewFolder(options.output);
    TuningDraft draft = draftOf(options);
    std::vector<Suggestion> leftAlone;
    const TuningDraft complete = completeDraft(draft, surveyOf(options.sessions), leftAlone);
    std::vector<Suggestion> suggestions = suggestTargets(
            complete, recordedTimes(options.sessions, complete), options.percentile, draft);
    const bool isAny = std::any_of(suggestions.begin(), suggestions.end(),
                                   [](const Suggestion& each) { return each.targetUs > 0; });
    suggestions.insert(suggestions.end(), leftAlone.begin(), leftAlone.end());
    if (isAny) {
        draft.data();  // throws when the loader refuses the result
        writeNewFolder(options.output, filesOf(draft.texts()));
    }
    printResult(tableOf(suggestions, options.percentile));
    if (!isAny) {
        sayError("velk-tuning", "nothing to suggest, and nothing is written");
    }
    return isAny ? kExitAsExpected : kExitUnexpected;
}

}  // namespace desk
