/*
 * The recorder, preloaded into programs: what it writes, and what becomes of the programs.
 */
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "session/SessionLine.h"
#include "session/SessionReader.h"
#include "support/Preload.h"
#include "support/TemporaryFolder.h"

namespace desk {
namespace {

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

struct Recording {
    std::vector<std::string> lines;  // without times
    std::vector<std::string> threads;
    std::optional<std::string> cutOff;
    std::optional<std::string> error;
};

Recording readRecording(const std::string& path) {
    InputFile input(path);
    SessionReader reader(input);
    Recording recording;
    for (bool isLast = false; !isLast;) {
        const SessionBlock block = reader.next();
        isLast = block.isLast;
        recording.threads.insert(recording.threads.end(), block.newThreads.begin(),
                                 block.newThreads.end());
        for (const SessionCall& call : block.calls) {
            std::string line;
            appendSessionLine(line, 0, recording.threads[call.thread], call.info->name,
                              call.arguments);
            recording.lines.push_back(line);
        }
        recording.cutOff = block.cutOff;
        recording.error = block.error;
    }
    return recording;
}

class Record : public testing::Test {
  protected:
    // Runs the command and returns the status of its exit, or 128 and the number of its signal.
    int run(const std::string& environment, const std::string& command) const {
        const std::string line = "env " + environment + " " + command + " 2>" + word("stderr");
        const int status = std::system(("exec " + line).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    int record(const std::string& recording, const std::string& command,
               const std::string& more = "") const {
        return run(withRecorder() + "VELK_RECORD=" + recording + " " + more, command);
    }
    static std::string withRecorder() {
        std::string words;
        for (const std::string& variable : preloadVariables({VELK_RECORDER})) {
            words += "'" + variable + "' ";
        }
        return words;
    }
    static std::string replay(const std::string& session, const std::string& output) {
        return VELK_REPLAY_PROGRAM " --tuning '" VELK_SAMPLES "/tuning' --format jsonl " + session +
               " >" + output;
    }
    // What the driver received, without times, and with threads by name alone.
    static std::string commandsOf(const std::string& path) {
        std::ifstream rows(path);
        std::string commands;
        for (std::string row; std::getline(rows, row);) {
            nlohmann::json json = nlohmann::json::parse(row);
            if (json.contains("command")) {
                json.erase("at_us");
                if (json.contains("fields")) {
                    json["fields"].erase("tid");
                }
                commands += json.dump() + "\n";
            }
        }
        return commands;
    }
    std::string path(const char* name) const { return mFolder.file(name); }
    std::string word(const char* name) const { return mFolder.word(name); }

  private:
    const TemporaryFolder mFolder;
};

TEST_F(Record, OfAReplayIsTheSessionAgain) {
    const std::string sample = VELK_SAMPLES "/capture-5s.jsonl";
    for (const char* order : {"", "VELK_RECORD_ORDER=exact"}) {
        ASSERT_EQ(record(word("first"), replay("'" + sample + "'", word("played")), order), 0)
                << readFile(path("stderr"));
        ASSERT_EQ(record(word("second"), replay(word("first"), word("replayed")), order), 0);
        const std::string commands = commandsOf(path("played"));
        EXPECT_GT(commands.size(), 3000U);
        EXPECT_EQ(commandsOf(path("replayed")), commands);

        const Recording first = readRecording(path("first"));
        const Recording played = readRecording(sample);
        EXPECT_EQ(first.lines.size(), played.lines.size());
        EXPECT_EQ(first.threads, played.threads);
        EXPECT_EQ(readRecording(path("second")).lines, first.lines);
        EXPECT_FALSE(first.cutOff);
    }
}

struct ProgramCase {
    const char* program;
    int status;
    size_t lines;
    size_t threads;
    bool isCutOff;
    const char* message;  // part of standard error, or null when there is to be none
};

class RecordOf : public Record, public testing::WithParamInterface<ProgramCase> {};

TEST_P(RecordOf, AProgram) {
    const ProgramCase& c = GetParam();
    EXPECT_EQ(record(word("r"), std::string(VELK_PROGRAM " ") + c.program), c.status);
    const Recording recording = readRecording(path("r"));
    EXPECT_EQ(recording.error, std::nullopt);
    EXPECT_EQ(recording.lines.size(), c.lines);
    EXPECT_EQ(recording.threads.size(), c.threads);
    EXPECT_EQ(recording.cutOff.has_value(), c.isCutOff);
    const std::string said = readFile(path("stderr"));
    if (c.message == nullptr) {
        EXPECT_EQ(said, "");
    } else {
        EXPECT_NE(said.find(c.message), std::string::npos) << said;
        EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
    }
}

constexpr ProgramCase kPrograms[] = {
        {"killed", 128 + SIGKILL, 20000, 1, true, nullptr},
        {"fork", 0, 1, 1, true, nullptr},
        {"c", 0, 3, 1, false, nullptr},
        {"closed", 0, 20001, 1, false, nullptr},
        {"threads", 0, 5, 3, false, nullptr},
        {"crowd", 0, 256, 256, false,
         "more threads at a time than the 256 that a session can have"},
        {"nan", 0, 1, 1, false, nullptr},
        {"foreign", 0, 1, 1, false, "the program links the library statically"},
};
INSTANTIATE_TEST_SUITE_P(Programs, RecordOf, testing::ValuesIn(kPrograms),
                         [](const auto& tested) { return tested.param.program; });

TEST_F(Record, ThatCannotGoOnLetsTheProgramGoOn) {
    struct Case {
        const char* program;
        std::string file;
        const char* message;
    };
    std::ofstream(path("file")) << "text";
    for (const Case& c : {
                 Case{"limit", word("r"), "File too large"},
                 {"nan", word("no/folder"), "No such file or directory"},
                 {"nan", word("file/below"), "Not a directory"},
                 {"nan", "/dev/full", "not a regular file"},
                 {"nan", word("stderr"), "is the program's standard error"},
         }) {
        EXPECT_EQ(record(c.file, std::string(VELK_PROGRAM " ") + c.program), 0);
        const std::string said = readFile(path("stderr"));
        EXPECT_TRUE(said.starts_with("velkrecord: the recording ends here: ")) << said;
        EXPECT_NE(said.find(c.message), std::string::npos) << said;
        EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
    }
    EXPECT_GT(readRecording(path("r")).lines.size(), 500U);
}

TEST_F(Record, OnAFullDiskLetsTheProgramGoOn) {
    std::filesystem::create_directory(path("disk"));
    const auto runWithDisk = [this](const std::string& command) {
        return run("", std::string("unshare --mount ") +
                               (geteuid() != 0 ? "--user --map-root-user " : "") +
                               "sh -c 'mount -t tmpfs -o size=256k none \"$0\" && \"$@\" && "
                               "cp \"$0/r\" \"$0.copy\"' " +
                               word("disk") + " " + command);
    };
    if (runWithDisk("touch " + word("disk/r")) != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    EXPECT_EQ(runWithDisk("env " + withRecorder() + "VELK_RECORD=" + word("disk/r") +
                          " " VELK_PROGRAM " anchors"),
              0);
    const std::string said = readFile(path("stderr"));
    EXPECT_NE(said.find("No space left on device"), std::string::npos) << said;
    EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
    const Recording recording = readRecording(path("disk.copy"));
    EXPECT_EQ(recording.error, std::nullopt);
    EXPECT_GT(recording.lines.size(), 1000U);
}

TEST_F(Record, ThatIsNotAskedForWritesNothing) {
    EXPECT_EQ(run(withRecorder(), VELK_PROGRAM " c"), 0);
    EXPECT_EQ(readFile(path("stderr")), "");
    EXPECT_EQ(run(withRecorder() + "VELK_RECORD_ORDER=some VELK_RECORD=" + word("r"),
                  VELK_PROGRAM " c"),
              0);
    EXPECT_NE(readFile(path("stderr")).find("expected \"exact\""), std::string::npos);
    EXPECT_FALSE(std::ifstream(path("r")).good());
}

TEST_F(Record, ThatIsCutOffPlaysUpToThere) {
    const std::string vsync = R"({"at_us": 1, "thread": "t", "call": "notifyVSync"})"
                              "\n";
    struct Case {
        std::string text;
        bool isCutOff;
        bool isMalformed;
    };
    const std::string zeros(3U << 20, '\0');  // more than a line may have
    for (const Case& c : {
                 Case{vsync + zeros, true, false},
                 {vsync + vsync.substr(0, 20) + zeros, true, false},
                 {vsync + vsync.substr(0, 20), true, false},
                 {vsync + vsync.substr(0, 20) + "\n", false, true},
                 {vsync + zeros + vsync, false, true},
         }) {
        std::ofstream(path("r")) << c.text;
        const Recording recording = readRecording(path("r"));
        EXPECT_EQ(recording.lines.size(), 1U);
        EXPECT_EQ(recording.cutOff, c.isCutOff ? std::optional(path("r") + ":2") : std::nullopt);
        EXPECT_EQ(recording.error.has_value(), c.isMalformed);
    }
}

}  // namespace
}  // namespace desk
