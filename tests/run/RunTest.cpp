/*
 * velk-run as users run it: programs of many kinds, which of their calls are seen, how they end.
 */
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace desk {
namespace {

using nlohmann::json;

constexpr const char* kTuning = " --tuning '" VELK_SAMPLES "/tuning' ";

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

class Run : public testing::Test {
  protected:
    // Runs a line of the shell and returns its exit status, or 128 plus the number of the signal
    // that ended it.
    int shell(const std::string& line) const {
        const int status = std::system(("exec " + line + " 2>" + word("err")).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    int run(const std::string& options, const std::string& command) const {
        return shell(VELK_RUN " --format jsonl --output " + word("out") + kTuning + options +
                     " -- " + command);
    }
    std::string err() const { return readFile(path("err")); }
    // The lines of an output of JSON Lines, the summary last.
    std::vector<json> rows(const char* name) const {
        std::vector<json> rows;
        std::ifstream file(path(name));
        for (std::string line; std::getline(file, line);) {
            rows.push_back(json::parse(line));
        }
        return rows;
    }
    json summary(const char* name = "out") const { return rows(name).back()["summary"]; }
    std::string path(const char* name) const { return mFolder.file(name); }
    std::string word(const char* name) const { return mFolder.word(name); }

  private:
    const TemporaryFolder mFolder;
};

struct ProgramCase {
    std::string name;
    std::string command;
    int status;
    int calls;
    int threads;
    const char* ending;
    const char* message;  // part of the only line on standard error; null: no line
    const char* options = "--quiet";
};

void PrintTo(const ProgramCase& c, std::ostream* stream) {
    *stream << c.name;
}

class RunOf : public Run, public testing::WithParamInterface<ProgramCase> {};

TEST_P(RunOf, AProgram) {
    const ProgramCase& c = GetParam();
    EXPECT_EQ(run(c.options, c.command), c.status);
    EXPECT_EQ(summary()["calls"], c.calls);
    EXPECT_EQ(summary()["threads"], c.threads);
    EXPECT_EQ(summary()["ending"], c.ending);
    if (c.message == nullptr) {
        EXPECT_EQ(err(), "");
    } else {
        EXPECT_NE(err().find(c.message), std::string::npos) << err();
        EXPECT_EQ(err().find('\n'), err().size() - 1) << err();
    }
}

const ProgramCase kPrograms[] = {
        {"cycles", VELK_PROGRAM " cycles", 0, 12, 1, "exited with 0", nullptr},
        {"inC", VELK_C_PROGRAM, 0, 2, 1, "exited with 0",
         "1 call returned -1 unexpectedly, the first in call 1"},
        {"crash", VELK_PROGRAM " crash", 128 + SIGSEGV, 1, 1, "ended by SIGSEGV",
         "1 call returned -1"},
        {"failing", VELK_PROGRAM " failing", 7, 1, 1, "exited with 7", "1 call returned -1"},
        {"killed", VELK_RECORDED_PROGRAM " killed", 128 + SIGKILL, 20000, 1, "ended by SIGKILL",
         "20000 calls returned -1"},
        {"closed", VELK_RECORDED_PROGRAM " closed", 0, 20001, 1, "exited with 0",
         "20001 calls returned -1"},
        {"threads", VELK_RECORDED_PROGRAM " threads", 0, 5, 3, "exited with 0",
         "5 calls returned -1"},
        {"underAShell", "sh -c '\"$0\" cycles && exit 3' " VELK_PROGRAM, 3, 12, 1, "exited with 3",
         nullptr},
        {"refused", VELK_PROGRAM " cycles", 12, 12, 1, "exited with 12", nullptr,
         "--driver open=EACCES"},
        {"cancelled", VELK_PROGRAM " cancel", 0, 1001, 2, "exited with 0", nullptr},
        {"leftUp", VELK_PROGRAM " up", 0, 1, 1, "exited with 0", nullptr},
        {"absentLibrary", "true", 0, 0, 0, "exited with 0", "true made no call to the library"},
        {"libraryWithin", VELK_PROGRAM_WITH_LIBRARY " cycles", 0, 0, 0, "exited with 0",
         "links the library statically"},
};
INSTANTIATE_TEST_SUITE_P(Programs, RunOf, testing::ValuesIn(kPrograms),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(Run, LeavesOtherProcessesAlone) {
    EXPECT_EQ(run("", VELK_RECORDED_PROGRAM " fork"), 0);
    EXPECT_EQ(summary()["calls"], 1);
    EXPECT_NE(err().find("uses the library too and is left alone"), std::string::npos) << err();
    EXPECT_EQ(run("--record " + word("r"), "sh -c '\"$0\" cycles; \"$0\" up' " VELK_PROGRAM), 0);
    EXPECT_EQ(std::ranges::count(readFile(path("r")), '\n'), 12);
    EXPECT_EQ(run("", VELK_PROGRAM " daemon"), 0);
    EXPECT_EQ(summary()["calls"], 2);
    EXPECT_NE(err().find("is followed to its end"), std::string::npos) << err();
}

TEST_F(Run, RefusesWhatItCannotSeeOrDo) {
    const std::string privileged = path("privileged");
    ASSERT_EQ(shell("cp " VELK_STATIC_PROGRAM " " + word("privileged")), 0);
    const bool canBeOthers = geteuid() == 0 && chown(privileged.c_str(), 1, 1) == 0;
    chmod(privileged.c_str(), S_ISUID | 0755);
    std::ofstream(path("text")) << "no program";
    std::ofstream(path("platform.json")) << "{}";
    struct Case {
        std::string arguments;
        int status;
        const char* message;
    };
    for (const Case& c : {
                 Case{"-- " VELK_STATIC_PROGRAM, 125, "statically linked"},
                 {"-- " + word("privileged"), 125,
                  canBeOthers ? "another user" : "statically linked"},
                 {"--output " + word("text") + " -- " + word("nothing"), 127,
                  "No such file or directory"},
                 {"-- " + word("text"), 126, "Permission denied"},
                 {"--quiet", 125, "no program, expected -- PROGRAM"},
                 {"--format xml -- true", 125, "neither table nor jsonl"},
                 {"--tuning " + word("") + " -- true", 125, "platform.json: "},
                 {"--log " VELK_STATIC_PROGRAM " -- " VELK_STATIC_PROGRAM, 125, "linked"},
                 {"--record " + word("r") + " --log " + word("r") + " -- true", 125, "same file"},
                 {"--record /dev/full -- true", 125, "not a regular file"},
                 {"--record " + word("no/r") + " -- true", 125, "No such file or directory"},
                 {"--record " + word("r") +
                          " -- env VELK_RECORD_ORDER=some " VELK_PROGRAM " cycles",
                  125, "holds 0 of 12 calls"},
                 {"--output /dev/full -- " VELK_PROGRAM " cycles", 125, "No space left on device"},
                 {"--output /dev/full -- " VELK_PROGRAM " failing", 7, "No space left on device"},
         }) {
        EXPECT_EQ(shell(VELK_RUN " " + c.arguments), c.status) << c.arguments;
        EXPECT_NE(err().find(c.message), std::string::npos) << err();
    }
    EXPECT_EQ(readFile(path("text")), "no program");
}

TEST_F(Run, FindsAndAwaitsItsProgramInAnyEnvironment) {
    std::filesystem::create_directory(path("true"));
    std::ofstream(path("text")) << "no program";
    struct Case {
        std::string environment;
        const char* command;
        int status;
    };
    for (const Case& c : {Case{"env PATH=" + word("") + ":\"$PATH\"", "true", 0},
                          {"env PATH=" + word("") + ":\"$PATH\"", "text", 126},
                          {"env -u PATH", "true", 0},
                          {"sh -c 'trap \"\" CHLD; exec \"$@\"' sh", "sh -c 'exit 3'", 3}}) {
        EXPECT_EQ(shell(c.environment + " " VELK_RUN " --quiet --output " + word("out") + kTuning +
                        "-- " + c.command),
                  c.status)
                << c.environment << ": " << err();
    }
}

TEST_F(Run, PassesSignalsOnAndSumsUpAllTheSame) {
    const std::string line =
            "sh -c 'mine=$0; trap \"\" INT; \"$@\" >\"$mine\" & pid=$!; "
            "until [ -s \"$mine\" ]; do sleep 0.05; done; "
            "kill -INT $pid; kill -TERM $pid; wait $pid' " +
            word("mine") + " " VELK_RUN " --format jsonl --output " + word("out") + kTuning +
            "-- " VELK_PROGRAM " wait";
    EXPECT_EQ(shell(line), 128 + SIGTERM);
    EXPECT_EQ(summary()["ending"], "ended by SIGTERM");
    EXPECT_EQ(summary()["interrupted"], true);
    EXPECT_EQ(summary()["calls"], 1);
    EXPECT_EQ(summary()["active"]["initialised"], true);
    EXPECT_EQ(readFile(path("mine")), "waiting\n");
}

// The commands without the members that differ from run to run.
std::string commandsOf(const std::vector<json>& rows) {
    std::string commands;
    for (json row : rows) {
        if (row.contains("command")) {
            row.erase("at_us");
            commands += row.dump() + "\n";
        }
    }
    return commands;
}

TEST_F(Run, ShowsAndRecordsWhatAReplayShows) {
    ASSERT_EQ(run("--log " + word("log") + " --trace " + word("trace") + " --record " + word("r"),
                  VELK_REPLAY_PROGRAM " '" VELK_SAMPLES "/capture-5s.jsonl' --quiet" +
                          std::string(kTuning) + ">" + word("theirs")),
              0)
            << err();
    ASSERT_EQ(shell(VELK_REPLAY_PROGRAM " --format jsonl" + std::string(kTuning) + word("r") +
                    " --log " + word("log2") + " >" + word("replayed")),
              0);
    const std::string commands = commandsOf(rows("out"));
    EXPECT_GT(commands.size(), 3000U);
    EXPECT_EQ(commands, commandsOf(rows("replayed")));
    for (const char* const figures :
         {"commands", "operations", "registrations", "findings", "calls", "threads"}) {
        EXPECT_EQ(summary()[figures], summary("replayed")[figures]) << figures;
    }
    const json trace = json::parse(readFile(path("trace")));
    EXPECT_GT(trace["traceEvents"].size(), 10000U);
    EXPECT_TRUE(std::ranges::all_of(trace["traceEvents"], [](const json& event) {
        const double us = event.value("ts", 0.0);  // of an anchor's pass as of its row: a whole one
        return event["ph"] != "b" || us == std::floor(us);
    }));
    EXPECT_EQ(std::ranges::count(readFile(path("log")), '\n'),
              std::ranges::count(readFile(path("log2")), '\n'));
}

}  // namespace
}  // namespace desk
