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
    std::optional<std::string> cutOff;  // where the recording breaks off

    SessionFigures figures;
    DriverSnapshot driver;

    // What went wrong without an injected fault: calls that failed, commands that the driver found
    // fault with. Empty when nothing did.
    std::string unexpected() const;
    // What calls are numbered by.
    const char* unit() const { return ending ? "call" : "line"; }
};

Summary summarize(const std::string& session, SessionFigures figures, const DriverSnapshot& driver,
                  const PlayResult& result, double playedSeconds);

// Of a program that has made its calls itself.
Summary summarizeProgram(const std::string& program, const std::string& ending, bool isStopped,
                         SessionFigures figures, const DriverSnapshot& driver);

// For people, with a line's end after every line.
std::string formatSummaryText(const Summary& summary);
// One line {"summary": {...}}, without the line's end.
std::string formatSummaryJson(const Summary& summary);

}  // namespace desk
