#include "sweep/ToolRows.h"

#include <ostream>

#include "sweep/SweptTool.h"

namespace desk {

namespace {

using Inputs = std::map<std::string, std::string>;

constexpr const char* kSession = "session.jsonl";

constexpr const char* kFailingLine =
        R"({"at_us": 6000000, "thread": "service", "call": "notifyTaskEnd", "key": "0x1", "task": 2})"
        "\n";

std::string firstLines(const std::string& text, int lines) {
    size_t end = 0;
    while (lines-- > 0) {
        end = text.find('\n', end) + 1;
    }
    return text.substr(0, end);
}

Inputs tuningData() {
    Inputs inputs;
    for (const std::string file : {"platform.json", "customer.json", "settings.json"}) {
        inputs["tuning/" + file] = contentOf(VELK_SAMPLES "/tuning/" + file);
    }
    return inputs;
}

Inputs inputsOfReplay(int lines, const std::string& more = "") {
    Inputs inputs = tuningData();
    inputs[kSession] = firstLines(contentOf(VELK_SAMPLES "/capture-5s.jsonl"), lines) + more;
    return inputs;
}

#ifdef VELK_RUN
Inputs inputsOfRun() {
    Inputs inputs = tuningData();
    inputs["read by it"] = inputs["typed"] = "for the program\n";
    return inputs;
}

Inputs outputsOfRun() {
    return {{"--output", "table"}, {"--record", "recording"}, {"--log", "log"},
            {"--ulog", "ulog"},    {"--trace", "trace"},      {"--report", "page"}};
}
#endif

}  // namespace

const std::vector<ToolRow>& toolRows() {
    static const std::vector<ToolRow> rows = {
            {.name = "replayOfStandardInput",
             .program = VELK_REPLAY_PROGRAM,
             .arguments = {"-", "--tuning", "tuning", "--trace", "trace", "--report", "page",
                           "--log", "log", "--ulog", "ulog"},
             .inputs = inputsOfReplay(500),
             .standardInput = kSession,
             .outputs = {{"--trace", "trace"},
                         {"--report", "page"},
                         {"--log", "log"},
                         {"--ulog", "ulog"}}},
            {.name = "replayWithItsLogOnStandardError",
             .program = VELK_REPLAY_PROGRAM,
             .arguments = {kSession, "--tuning", "tuning", "--format", "jsonl", "--log", "-",
                           "--driver", "29=EIO*3"},
             .inputs = inputsOfReplay(7)},
            {.name = "replayThatFails",
             .program = VELK_REPLAY_PROGRAM,
             .arguments = {kSession, "--tuning", "tuning"},
             .inputs = inputsOfReplay(7, kFailingLine),
             .status = 1},
            {.name = "checkOfTuningData",
             .program = VELK_TUNING_PROGRAM,
             .arguments = {"check", "tuning", kSession, "--strict"},
             .inputs = inputsOfReplay(7),
             .status = 1},
            {.name = "compareOfTunings",
             .program = VELK_TUNING_PROGRAM,
             .arguments = {"compare", "tuning", "tuning", kSession},
             .inputs = inputsOfReplay(30)},
            {.name = "suggestionOfTargets",
             .program = VELK_TUNING_PROGRAM,
             .arguments = {"suggest", kSession, "--base", "tuning", "--percentile", "10", "-o",
                           "new"},
             .inputs = inputsOfReplay(60),
             .madeFiles = {"new/platform.json", "new/settings.json"}},
            {.name = "checkOfANode",
             .program = VELK_NODE_CHECK_PROGRAM,
             .arguments = {"--check", "pointers", "--check", "threadIds", "--check", "files",
                           "--check", "dyingThreads", "--check", "dyingProcesses"},
             .libraries = {VELK_NODE_LIBRARY},
             .oneByOne = 9,
             .isUnwatched = true},
            {.name = "programThatOpensTheNode",
             .program = VELK_NODE_WAYS,
             .troubles = {1},
             .speaker = "node-ways",
             .libraries = {VELK_NODE_LIBRARY},
             .isUnwatched = true},
#ifdef VELK_RUN
            {.name = "runOfAProgram",
             .program = VELK_RUN,
             .arguments = {"--tuning", "tuning", "--output", "table", "--record", "recording",
                           "--log", "log", "--ulog", "ulog", "--trace", "trace", "--report", "page",
                           "--", VELK_LIVE_PROGRAM, "up", "read by it"},
             .inputs = inputsOfRun(),
             .standardInput = "typed",
             .outputs = outputsOfRun(),
             .failure = 125,
             .troubles = {125, 126, 255},
             .faulted = "velk-run"},
            {.name = "programThatIsRun",
             .program = VELK_RUN,
             .arguments = {"--tuning", "tuning", "--record", "recording", "--log", "log", "--",
                           VELK_LIVE_PROGRAM, "cycles"},
             .inputs = tuningData(),
             .outputs = {{"--record", "recording"}, {"--log", "log"}},
             .failure = 125,
             .troubles = {1, 2, 3, 4, 8, 12, 125},
             .faulted = "velk_live_program"},
            {.name = "recordingOfAProgram",
             .program = VELK_RECORDED_PROGRAM,
             .arguments = {"c"},
             .madeFiles = {"recording"},
             .troubles = {0},
             .speaker = "velkrecord",
             .libraries = {VELK_RECORDER},
             .environment = "VELK_RECORD=recording",
             .isUnwatched = true},
#endif
    };
    return rows;
}

void PrintTo(const ToolRow& row, std::ostream* stream) {
    *stream << row.name;
}

}  // namespace desk
