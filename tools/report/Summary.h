/*
 * The summary of a replay and its formatting.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "driver/DriverSnapshot.h"
#include "play/PlayResult.h"
#include "report/Statistics.h"

namespace desk {

struct ActiveRun {
    std::string thread;
    int task = 0;
    std::string name;
    int64_t sinceUs = 0;
};

struct ActiveSpan {
    std::string thread;
    int32_t criticalValue = 0;
    int64_t sinceUs = 0;
};

struct Summary {
    std::string session;
    uint64_t calls = 0;
    size_t threads = 0;
    int64_t recordedUs = 0;
    double playedSeconds = 0;
    bool isStopped = false;
    std::optional<std::string> error;
    std::optional<std::string> cutOff;  // where the recording breaks off

    DriverSnapshot driver;
    std::vector<CallStatistics> operations;
    std::vector<TaskStatistics> tasks;
    std::vector<ActiveRun> activeRuns;
    std::vector<ActiveSpan> activeSpans;

    // What went wrong other than as the driver was told to: calls that failed, commands that it
    // found fault with. Empty when nothing did.
    std::string unexpected() const;
};

Summary summarize(const std::string& session, const Statistics& statistics,
                  const DriverSnapshot& driver, const PlayResult& result, double playedSeconds);

// For people, with a line's end after every line.
std::string formatSummaryText(const Summary& summary);
// One line {"summary": {...}}, without the line's end.
std::string formatSummaryJson(const Summary& summary);

}  // namespace desk
