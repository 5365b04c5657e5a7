/*
 * Plays scenarios written as text: calls, changes of the test's surroundings between them, and the
 * transcript that is expected. tests/transcripts/README.md describes the format.
 */
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace fake {

struct ScriptLine {
    int number;
    std::string text;
};

struct Script {
    std::filesystem::path file;
    ScriptLine name;
    std::vector<ScriptLine> lines;
};

// What is wrong in a line, and what was expected there.
class Mistake : public std::runtime_error {
  public:
    using runtime_error::runtime_error;
};

// The scenarios of all files of the folder but README.md. Throws a Mistake that begins with
// "FILE:LINE: " when a file has none, or lines that belong to none, and when there are no files.
std::vector<Script> readScripts(const std::filesystem::path& folder);

// Plays the scenario. Its first mistake ends it as a failure that names file and line, as does an
// expectation that is not met.
void play(const Script& script);

// The mark of a line and what follows: {">", "end", "1", "5"}.
using Words = std::vector<std::string>;
void carryOut(const Words& words);
// How all changes are written: "! missing own/customer", ...
std::vector<std::string> changeUsages();

// The kinds of events that expectations compare.
uint32_t& shownEvents();

}  // namespace fake
