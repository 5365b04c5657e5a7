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

// What a target is for, and the times that were recorded of it.
struct Subject {
    enum class Kind : uint8_t { Task, Latency, Jitter };

    Kind kind = Kind::Task;
    int number = 0;
    UseCase useCase;  // the first one that it was recorded in
    Distribution times;
};

struct Suggestion {
    std::string name;  // "task 5", "anchor 1 latency"
    uint64_t count = 0;
    int64_t percentileUs = 0;
    int64_t formerUs = 0;  // 0: none
    int64_t targetUs = 0;  // 0: is left alone
    std::string reason;    // why it is what it is
};

// Rounded up to steps of 100 us, above 100 ms to steps of 1 ms, and above 1 s to steps of 10 ms.
int64_t roundUpTarget(int64_t us);
// How many times tell that percentile: with fewer, none is expected to lie above it.
uint64_t fewestTimes(int percentile);

// A draft in which everything that the sessions start and pass has a target, so that a replay shows
// all times. Adds to `leftAlone` what can have none.
TuningDraft completeDraft(const TuningDraft& base, const SessionSurvey& survey,
                          std::vector<Suggestion>& leftAlone);

// Sets the targets in the draft, which is that of the base. `complete` is the one that the times
// were recorded with.
std::vector<Suggestion> suggestTargets(const TuningDraft& complete, const RunTimes& times,
                                       int percentile, TuningDraft& draft);

}  // namespace desk
