/*
 * How velk-replay fares with drivers, users and sessions that are not as they should be.
 */
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>
#include <string>
#include <vector>

#include "ReplayFixture.h"
#include "ToolRun.h"

namespace desk {
namespace {

struct DriverCase {
    const char* driver;
    const char* failures;  // what the summary says of calls that returned -1, blanks apart
};

TEST_F(Replay, CountsInjectedFailuresApartFromOthers) {
    for (const DriverCase& c : {
                 DriverCase{"", "none "},
                 {"taskInit=EINVAL*3", "none "},
                 {"29=EIO", "notifyTaskStart 2 0 "},
                 {"absent", "init 1 0 uninit 1 0 notifyTaskStart 2 0 "},
                 {"open=EACCES", "init 1 0 uninit 1 0 notifyTaskStart 2 0 "},
                 {"uninit=EPERM", "uninit 1 0 "},
                 {"slow=1us", "none "},
         }) {
        const ToolOutcome outcome = runTool(with({"--quiet", "--driver", c.driver}),
                                            std::string(kInit) + kStart + kStart + kUninit);
        const std::string section = from(outcome.out, "Calls that returned -1");
        std::istringstream words(section.substr(0, section.find("\n\n")));
        std::string found;
        for (std::string word; words >> word;) {
            found += word + " ";
        }
        EXPECT_EQ(found, std::string("Calls that returned -1 injected unexpected ") + c.failures);
        EXPECT_EQ(outcome.status, 0) << c.driver;
    }
}

TEST_F(Replay, TellsRefusedAndReplayedRegistrations) {
    const ToolOutcome outcome = runTool(with({"--driver", "taskInit=EINVAL*2"}),
                                        std::string(kInit) + kStart + kStart + kUninit);
    EXPECT_NE(outcome.out.find("  1 task registered, 1 of them after a refusal; 2 refusals\n"),
              std::string::npos)
            << outcome.out;
    EXPECT_NE(outcome.out.find("taskName=\"SCALE\"  <- EINVAL, injected\n"), std::string::npos);
}

TEST_F(Replay, AMalformedLineEndsItAndThePlayedPartIsReported) {
    const ToolOutcome outcome =
            runTool(with({"--quiet"}), std::string(kInit) + kStart +
                                               R"({"at_us": 1, "thread": "p", "call": "vsync"})" +
                                               "\n" + kUninit);
    EXPECT_TRUE(outcome.err.starts_with(
            "velk-replay: standard input:3: call: unknown call \"vsync\", expected"))
            << outcome.err;
    EXPECT_NE(outcome.out.find("  2 calls on 2 threads"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("  ended early: standard input:3: call: unknown call"),
              std::string::npos);
    EXPECT_NE(outcome.out.find("Still active at the end\n  the library is up\n"),
              std::string::npos);
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(Replay, ASessionWithoutACallIsAnErrorUnlessItIsEmpty) {
    const ToolOutcome empty = runTool(with({"-q"}), "");
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(empty.err, "velk-replay: standard input: empty, there is no call to play\n");
    const ToolOutcome blank = runTool(with({"-q"}), " \n\n");
    EXPECT_EQ(blank.status, 2);
    EXPECT_EQ(blank.err, "velk-replay: standard input: no call in it, expected one a line\n");
}

TEST_F(Replay, CtrlCReportsWhatWasPlayedSoFar) {
    ToolRun run(with({}));
    run.write(std::string(kInit) + kStart);
    run.readUntil("taskStart");
    run.sendSignal(SIGINT);
    // Its input stays open: at the end of the input it would have ended by itself.
    const ToolOutcome outcome = run.waitForEnd();
    EXPECT_EQ(outcome.status, 130);
    EXPECT_NE(outcome.out.find("  2 calls on 2 threads"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("  ended early: interrupted\n"), std::string::npos);
}

TEST_F(Replay, PropertiesComeFromTheCommandLineAndFromTheSession) {
    const std::string setProperty =
            R"({"at_us": 0, "thread": "s", "call": "setProperty", "name": "vendor.debug.velk.forceoff", "value": "false"})"
            "\n";
    const Arguments off = with({"-q", "--property", "vendor.debug.velk.forceoff=1"});
    EXPECT_EQ(runTool(off, std::string(kInit) + kUninit).status, 1);
    const ToolOutcome doubted = runTool(with({"-q", "--property", "vendor.debug.velk.forcOff=1",
                                              "--property", "vendor.debug.velk.forceoff=maybe",
                                              "--property", "vendor.debug.velk.latencySpec=far"}),
                                        std::string(kInit) + kUninit);
    EXPECT_EQ(doubted.status, 0);
    for (const char* doubt : {"warning: --property: vendor.debug.velk.forcOff: unknown",
                              "\"maybe\" is no boolean", "\"far\" is no whole number"}) {
        EXPECT_NE(doubted.err.find(doubt), std::string::npos) << doubted.err;
    }
    EXPECT_EQ(runTool(off, setProperty + kInit + kUninit).status, 0);
    std::string misspelt = setProperty;
    misspelt.replace(misspelt.find("forceoff"), 8, "forcOff");
    EXPECT_TRUE(runTool(with({"-q"}), misspelt)
                        .err.starts_with("velk-replay: warning: standard input:1: vendor.debug."
                                         "velk.forcOff: unknown to the library"));
}

TEST_F(Replay, LogsGoToFiles) {
    const ToolOutcome outcome = runTool(with({"-q", "--log", path("android.log"), "--ulog", "-"}),
                                        std::string(kInit) + kStart + kUninit);
    EXPECT_EQ(outcome.status, 0);
    // A message of the level that asks for most switches.
    constexpr const char* kMessage = "D VELKPerfCtrl: [notifyTaskStart] notifyTaskStart\n";
    const std::string log = readFile(path("android.log"));
    EXPECT_NE(log.find(kMessage), std::string::npos) << log;
    EXPECT_NE(outcome.err.find(kMessage), std::string::npos) << outcome.err;
}

TEST_F(Replay, TheSampleSucceedsWithTheSampleTuning) {
    const ToolOutcome outcome = runTool(
            {VELK_SAMPLES "/capture-5s.jsonl", "--quiet", "--tuning", VELK_SAMPLES "/tuning"});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_NE(outcome.out.find("  3944 calls on 7 threads, 5.002 s recorded"), std::string::npos);
    EXPECT_EQ(outcome.out.find("Findings of the driver"), std::string::npos);
}

struct UsageCase {
    const char* arguments;  // FOLDER stands for the folder of the tuning data, EMPTY for ""
    int status;
    const char* error;
};

TEST_F(Replay, ItsUsageIsChecked) {
    for (const UsageCase& c : {
                 UsageCase{"--help", 0, ""},
                 {"--version", 0, ""},
                 {"--calls", 0, ""},
                 {"", 2, "SESSION is required"},
                 {"- --tunin", 2, "not expected: --tunin"},
                 {"- --tunin", 2, "--tuning is required"},
                 {"- --tuning FOLDER --log EMPTY", 2, "--log: empty, expected a text"},
                 {"/nonexistent --tuning FOLDER", 2,
                  "velk-replay: /nonexistent: No such file or directory"},
                 {"/tmp --tuning FOLDER", 2, "velk-replay: /tmp: Is a directory"},
                 {"- --tuning /nonexistent", 2,
                  "velk-replay: /nonexistent/platform.json: the file cannot be read"},
                 {"- --tuning FOLDER --speed 0", 2,
                  "--speed: \"0\" is neither a number above 0 nor max"},
                 {"- --tuning FOLDER --format xml", 2,
                  "--format: \"xml\" is neither table nor jsonl"},
                 {"- --tuning FOLDER --property =1", 2,
                  "--property: \"=1\" is not of the form NAME=VALUE"},
                 {"- --tuning FOLDER --filter command=none", 2,
                  "velk-replay: --filter: filter item \"command=none\": expected a number from 27 "
                  "to"},
                 {"- --tuning FOLDER --filter sort=up", 2, "expected command=NAME, thread=NAME"},
                 {"- --tuning FOLDER --trace -", 2, "--trace: standard output has the summary"},
                 {"- --tuning FOLDER --report -", 2, "--report: standard output has the summary"},
                 {"- --tuning FOLDER --driver 28=EWHAT", 2,
                  "--driver: driver item \"28=EWHAT\": \"EWHAT\" is no errno"},
                 {"- --tuning FOLDER --trace /nonexistent/t", 2, "/nonexistent/t"},
         }) {
        std::istringstream words(c.arguments);
        Arguments arguments;
        for (std::string word; words >> word;) {
            arguments.push_back(word == "FOLDER" ? mFolder.string() : word == "EMPTY" ? "" : word);
        }
        const ToolOutcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_NE(outcome.err.find(c.error), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out.empty(), c.status != 0);
    }
}

}  // namespace
}  // namespace desk
