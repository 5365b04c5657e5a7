/*
 * Targets that recorded times suggest.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tune/RunTimes.h"
#include "tune/TuningDraft.h"

namespace desk {

// What a target applies to, and the times recorded for it.
struct Subject {
    enum class Kind : uint8_t { Task, Latency, Jitter };

    Kind kind = Kind::Task;
    int number = 0;
    UseCase useCase;  // the first in which it was recorded
    Distribution times;
};

struct Suggestion {
    std::string name;  // "task 5", "anchor 1 latency"
    uint64_t count = 0;
    int64_t percentileUs = 0;
    int64_t formerUs = 0;  // 0: none
    int64_t targetUs = 0;  // 0: unchanged
    std::string reason;    // why this target
};

// Rounded up to steps of 100 us, above 100 ms to steps of 1 ms, and above 1 s to steps of 10 ms.
int64_t roundUpTarget(int64_t us);
// How many times the percentile needs: with fewer, less than one is expected above it.
uint64_t fewestTimes(int percentile);

// A draft with targets for all tasks and anchors of the sessions, so that a replay measures all
// times. Adds those that can have no target to `leftAlone`.
TuningDraft completeDraft(const TuningDraft& base, const SessionSurvey& survey,
                          std::vector<Suggestion>& leftAlone);

// Sets the targets in `draft`, which holds the base. `complete` is the draft with which the times
// were measured.
std::vector<Suggestion> suggestTargets(const TuningDraft& complete, const RunTimes& times,
                                       int percentile, TuningDraft& draft);

}  // namespace desk
