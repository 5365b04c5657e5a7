/*
 * The summary of a replay and its formatting.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "analysis/SessionFigures.h"
#include "driver/DriverSnapshot.h"
#include "play/PlayResult.h"

namespace desk {

struct Summary {
    std::string session;
    double playedSeconds = 0;
    bool isStopped = false;
    std::optional<std::string> error;
    std::optional<std::string> cutOff;  // where the recording breaks off

    SessionFigures figures;
    DriverSnapshot driver;

    // What went wrong other than as the driver was told to: calls that failed, commands that it
    // found fault with. Empty when nothing did.
    std::string unexpected() const;
};

Summary summarize(const std::string& session, SessionFigures figures, const DriverSnapshot& driver,
                  const PlayResult& result, double playedSeconds);

// For people, with a line's end after every line.
std::string formatSummaryText(const Summary& summary);
// One line {"summary": {...}}, without the line's end.
std::string formatSummaryJson(const Summary& summary);

}  // namespace desk
