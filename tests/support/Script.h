/*
 * Plays a scenario written as text: calls, changes of the world between them, and the transcript
 * that is expected.
 *
 *   == NAME             begins a scenario; each is a test
 *   > CALL ARGUMENT...  calls an operation, "T> ..." on a thread of its own
 *   ! CHANGE ...        changes the world: properties, tuning data, the node's injected faults,
 * what is shown # ...               a remark anything else       what was heard since the last such
 * lines; "nothing" for nothing
 *
 * Calls and changes are listed in ScriptCommands.cpp; what a transcript looks like in Recorder.h.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fake {

struct ScriptLine {
    std::string file;
    int number;
    std::string text;
};

struct Script {
    std::string name;
    std::vector<ScriptLine> lines;
};

std::vector<Script> readScripts(const std::string& file);

// Plays the scenario in a fresh world, with gtest's failures at the lines of the file.
void play(const Script& script);

// The name of a call or a change, then its arguments.
using Words = std::vector<std::string>;
void callOperation(const Words& words);
// `shown` is what of the transcript is compared from then on.
void changeWorld(const Words& words, uint32_t& shown);

}  // namespace fake
