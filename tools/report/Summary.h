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
    std::string session;                // or the program that made the calls
    std::optional<std::string> ending;  // of a program: "exited with 1", "ended by SIGSEGV"
    double playedSeconds = 0;
    bool isStopped = false;
    std::optional<std::string> error;
    std::optional<std::string> cutOff;  // where the recording was cut off

    SessionFigures figures;
    DriverSnapshot driver;

    // What went wrong without an injected fault: failed calls, and commands in which the driver
    // found a fault. Empty when nothing did.
    std::string unexpected() const;
    // The unit in which calls are numbered.
    const char* unit() const { return ending ? "call" : "line"; }
};

Summary summarize(const std::string& session, SessionFigures figures, const DriverSnapshot& driver,
                  const PlayResult& result, double playedSeconds);

// The summary of a live program.
Summary summarizeProgram(const std::string& program, const std::string& ending, bool isStopped,
                         SessionFigures figures, const DriverSnapshot& driver);

// As text, with a newline after every line.
std::string formatSummaryText(const Summary& summary);
// One line {"summary": {...}}, without a newline.
std::string formatSummaryJson(const Summary& summary);

}  // namespace desk
