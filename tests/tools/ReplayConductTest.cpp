/*
 * How velk-replay fares with drivers, users and sessions that are not as they should be.
 */
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ReplayFixture.h"
#include "ToolRun.h"

namespace desk {
namespace {

struct DriverCase {
    const char* name;
    const char* driver;
    int status;
    const char* failures;  // what the summary says of calls that returned -1
};

void PrintTo(const DriverCase& driver, std::ostream* out) {
    *out << driver.name;
}

class ReplayDriver : public Replay, public testing::WithParamInterface<DriverCase> {};

TEST_P(ReplayDriver, FailuresAsToldAreToldFromOthers) {
    const ToolOutcome outcome = runTool(with({"--quiet", "--driver", GetParam().driver}),
                                        std::string(kInit) + kStart + kStart + kUninit);
    const std::string failures = from(outcome.out, "Calls that returned -1");
    EXPECT_EQ(failures.substr(0, failures.find("\n\n")),
              std::string("Calls that returned -1                       as told  unexpected\n") +
                      GetParam().failures);
    EXPECT_EQ(outcome.status, GetParam().status);
}

const DriverCase kDriverCases[] = {
        {"good", "", 0, "  none"},
        {"registrationRefusedAndReplayed", "taskInit=EINVAL*3", 0, "  none"},
        {"startsRefused", "29=EIO", 0,
         "  notifyTaskStart                                  2           0"},
        {"absent", "absent", 0,
         "  init                                             1           0\n"
         "  uninit                                           1           0\n"
         "  notifyTaskStart                                  2           0"},
        {"openRefused", "open=EACCES", 0,
         "  init                                             1           0\n"
         "  uninit                                           1           0\n"
         "  notifyTaskStart                                  2           0"},
        {"uninitRefused", "uninit=EPERM", 0,
         "  uninit                                           1           0"},
        {"slow", "slow=1us", 0, "  none"},
};

INSTANTIATE_TEST_SUITE_P(All, ReplayDriver, testing::ValuesIn(kDriverCases),
                         [](const auto& each) { return each.param.name; });

TEST_F(Replay, TellsRefusedAndReplayedRegistrations) {
    const ToolOutcome outcome = runTool(with({"--driver", "taskInit=EINVAL*2"}),
                                        std::string(kInit) + kStart + kStart + kUninit);
    EXPECT_NE(outcome.out.find("  1 accepted, 2 refused, 1 of these replayed\n"), std::string::npos)
            << outcome.out;
    EXPECT_NE(outcome.out.find("taskName=\"SCALE\"  <- EINVAL, as told\n"), std::string::npos);
}

TEST_F(Replay, AMalformedLineEndsItAndThePlayedPartIsReported) {
    const ToolOutcome outcome =
            runTool(with({"--quiet"}), std::string(kInit) + kStart +
                                               R"({"at_us": 1, "thread": "p", "call": "vsync"})" +
                                               "\n" + kUninit);
    EXPECT_TRUE(outcome.err.starts_with("standard input:3: call: unknown call \"vsync\", expected"))
            << outcome.err;
    EXPECT_NE(outcome.out.find("  2 calls on 2 threads"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("  ended early: standard input:3: call: unknown call"),
              std::string::npos);
    EXPECT_NE(outcome.out.find("Still active at the end\n  the library is up\n"),
              std::string::npos);
    EXPECT_EQ(outcome.status, 2);
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
    EXPECT_EQ(runTool(off, setProperty + kInit + kUninit).status, 0);
}

TEST_F(Replay, LogsGoToFiles) {
    const ToolOutcome outcome = runTool(with({"-q", "--log", path("android.log"), "--ulog", "-"}),
                                        std::string(kInit) + kUninit);
    EXPECT_EQ(outcome.status, 0);
    std::ostringstream log;
    log << std::ifstream(path("android.log")).rdbuf();
    EXPECT_NE(log.str().find("VELKPerfCtrl: [init] init done\n"), std::string::npos) << log.str();
    EXPECT_NE(outcome.err.find("VELKPerfCtrl: [init] init done\n"), std::string::npos)
            << outcome.err;
}

TEST_F(Replay, TheSampleSucceedsWithTheSampleTuning) {
    const ToolOutcome outcome = runTool(
            {VELK_SAMPLES "/capture-5s.jsonl", "--quiet", "--tuning", VELK_SAMPLES "/tuning"});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_NE(outcome.out.find("  3944 calls on 7 threads, 5.002 s recorded"), std::string::npos);
    EXPECT_EQ(outcome.out.find("Findings of the driver"), std::string::npos);
}

struct UsageCase {
    const char* name;
    Arguments arguments;  // FOLDER stands for the folder of the tuning data
    int status;
    const char* error;
};

void PrintTo(const UsageCase& usage, std::ostream* out) {
    *out << usage.name;
}

class ReplayUsage : public Replay, public testing::WithParamInterface<UsageCase> {};

TEST_P(ReplayUsage, IsChecked) {
    Arguments arguments = GetParam().arguments;
    for (std::string& argument : arguments) {
        argument = argument == "FOLDER" ? mFolder.string() : argument;
    }
    const ToolOutcome outcome = runTool(arguments);
    EXPECT_EQ(outcome.status, GetParam().status);
    EXPECT_NE(outcome.err.find(GetParam().error), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out.empty(), GetParam().status != 0);
}

const UsageCase kUsageCases[] = {
        {"help", {"--help"}, 0, ""},
        {"version", {"--version"}, 0, ""},
        {"nothing", {}, 2, "SESSION is required"},
        {"noTuning", {"-"}, 2, "--tuning is required"},
        {"noSuchSession",
         {"/nonexistent", "--tuning", "FOLDER"},
         2,
         "velk-replay: /nonexistent: No such file or directory"},
        {"sessionIsAFolder",
         {"/tmp", "--tuning", "FOLDER"},
         2,
         "velk-replay: /tmp: Is a directory"},
        {"noSuchTuning",
         {"-", "--tuning", "/nonexistent"},
         2,
         "velk-replay: /nonexistent/platform.json: the file cannot be read"},
        {"speedZero",
         {"-", "--tuning", "FOLDER", "--speed", "0"},
         2,
         "--speed: \"0\" is neither a number above 0 nor max"},
        {"format",
         {"-", "--tuning", "FOLDER", "--format", "xml"},
         2,
         "--format: \"xml\" is neither table nor jsonl"},
        {"property",
         {"-", "--tuning", "FOLDER", "--property", "=1"},
         2,
         "--property: \"=1\" is not of the form NAME=VALUE"},
        {"driver",
         {"-", "--tuning", "FOLDER", "--driver", "28=EWHAT"},
         2,
         "--driver: driver item \"28=EWHAT\": \"EWHAT\" is no errno"},
        {"traceNotWritable",
         {"-", "--tuning", "FOLDER", "--trace", "/nonexistent/t"},
         2,
         "/nonexistent/t"},
};

INSTANTIATE_TEST_SUITE_P(All, ReplayUsage, testing::ValuesIn(kUsageCases),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace desk
