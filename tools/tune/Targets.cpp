#include "tune/Targets.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "VELKJsonConvertor.h"

namespace desk {

namespace {

constexpr int64_t kProvisionalUs = 1'000'000;

AnchorTarget anchorTargetOf(Subject::Kind kind) {
    return kind == Subject::Kind::Latency ? AnchorTarget::Latency : AnchorTarget::Jitter;
}

std::optional<TuningPlace> placeOf(const TuningDraft& draft, const Subject& subject) {
    return subject.kind == Subject::Kind::Task ? draft.findTask(subject.useCase, subject.number)
                                               : draft.findAnchor(subject.useCase, subject.number,
                                                                  anchorTargetOf(subject.kind));
}

TuningPlace add(TuningDraft& draft, const Subject& subject, int64_t us) {
    return subject.kind == Subject::Kind::Task ? draft.addTask(subject.useCase, subject.number, us)
                                               : draft.addAnchor(subject.useCase, subject.number,
                                                                 anchorTargetOf(subject.kind), us);
}

std::string nameOf(const Subject& subject) {
    switch (subject.kind) {
        case Subject::Kind::Latency:
            return fmt::format("anchor {} latency", subject.number);
        case Subject::Kind::Jitter:
            return fmt::format("anchor {} jitter", subject.number);
        case Subject::Kind::Task:
            break;
    }
    return fmt::format("task {}", subject.number);
}

// Use cases that share a variant share its targets, so their times are joined.
using Subjects = std::map<TuningPlace, Subject>;

void gather(const TuningDraft& complete, const UseCase& useCase, Subject::Kind kind,
            const std::map<int, Distribution>& times, Subjects& subjects) {
    for (const auto& [number, distribution] : times) {
        Subject subject;
        subject.kind = kind;
        subject.number = number;
        subject.useCase = useCase;
        if (const auto place = placeOf(complete, subject)) {
            subjects.try_emplace(*place, subject).first->second.times.add(distribution);
        }
    }
}

Suggestion suggest(const Subject& subject, int percentile, TuningDraft& draft) {
    Suggestion suggestion;
    suggestion.name = nameOf(subject);
    suggestion.count = subject.times.count();
    const std::optional<TuningPlace> place = placeOf(draft, subject);
    suggestion.formerUs = place ? draft.valueAt(*place) : 0;
    const uint64_t fewest = fewestTimes(percentile);
    if (suggestion.count > 0) {
        suggestion.percentileUs = subject.times.percentile(static_cast<uint64_t>(percentile));
    }
    if (suggestion.count < fewest) {
        suggestion.reason =
                fmt::format("left alone: too few for p{}, at least {}", percentile, fewest);
        return suggestion;
    }
    suggestion.targetUs = roundUpTarget(suggestion.percentileUs);
    if (suggestion.targetUs > std::numeric_limits<int32_t>::max()) {
        suggestion.targetUs = 0;
        suggestion.reason = "left alone: longer than a target can be";
        return suggestion;
    }
    draft.setValue(place ? *place : add(draft, subject, suggestion.targetUs), suggestion.targetUs);
    suggestion.reason = !place ? fmt::format("added: p{} rounded up", percentile)
                        : suggestion.targetUs == suggestion.formerUs
                                ? "as it was"
                                : fmt::format("p{} rounded up", percentile);
    return suggestion;
}

void leaveAlone(const std::string& name, const std::string& reason,
                std::vector<Suggestion>& leftAlone) {
    leftAlone.push_back({name, 0, 0, 0, 0, "left alone: " + reason});
}

void completeTask(const UseCase& useCase, int task, TuningDraft& draft,
                  std::vector<Suggestion>& leftAlone) {
    const std::string name = fmt::format("task {}", task);
    if (task < 0 || task == VELK_TASK_ENUM_GAP) {
        leaveAlone(name, "no task of tuning data", leftAlone);
        return;
    }
    const auto place = draft.findTask(useCase, task);
    if (!place) {
        draft.addTask(useCase, task, kProvisionalUs);
    } else if (draft.isSwitchedOff(*place)) {
        leaveAlone(name, "its target or uclamp of 0 makes every start fail", leftAlone);
    }
}

}  // namespace

int64_t roundUpTarget(int64_t us) {
    constexpr int64_t kStepUs = 100;
    int64_t step = kStepUs;
    for (int64_t limit = 100'000; us > limit && limit <= 1'000'000; limit *= 10) {
        step *= 10;
    }
    return us == 0 ? step : us + (step - us % step) % step;
}

uint64_t fewestTimes(int percentile) {
    const auto above = static_cast<uint64_t>(100 - percentile);
    return (100 + above - 1) / above;
}

TuningDraft completeDraft(const TuningDraft& base, const SessionSurvey& survey,
                          std::vector<Suggestion>& leftAlone) {
    TuningDraft draft = base;
    for (const auto& [useCase, asked] : survey.useCases()) {
        draft.serve(useCase);
        for (const auto& [task, place] : asked.tasks) {
            completeTask(useCase, task, draft, leftAlone);
        }
        for (const auto& [anchor, place] : asked.anchors) {
            if (!draft.findAnchor(useCase, anchor, AnchorTarget::Latency) &&
                !draft.findAnchor(useCase, anchor, AnchorTarget::Jitter)) {
                draft.addAnchor(useCase, anchor, AnchorTarget::Latency, kProvisionalUs);
                draft.addAnchor(useCase, anchor, AnchorTarget::Jitter, kProvisionalUs);
            }
        }
    }
    return draft;
}

std::vector<Suggestion> suggestTargets(const TuningDraft& complete, const RunTimes& times,
                                       int percentile, TuningDraft& draft) {
    Subjects subjects;
    for (const auto& [useCase, ofUseCase] : times) {
        gather(complete, useCase, Subject::Kind::Task, ofUseCase.runs, subjects);
        gather(complete, useCase, Subject::Kind::Latency, ofUseCase.latency, subjects);
        gather(complete, useCase, Subject::Kind::Jitter, ofUseCase.jitter, subjects);
    }
    std::vector<Subject> ordered;
    ordered.reserve(subjects.size());
    for (auto& [place, subject] : subjects) {
        ordered.push_back(std::move(subject));
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const Subject& one, const Subject& other) {
        return std::tie(one.kind, one.number) < std::tie(other.kind, other.number);
    });
    std::vector<Suggestion> suggestions;
    suggestions.reserve(ordered.size());
    for (const Subject& subject : ordered) {
        suggestions.push_back(suggest(subject, percentile, draft));
    }
    return suggestions;
}

}  // namespace desk
