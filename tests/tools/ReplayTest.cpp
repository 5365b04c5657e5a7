/*
 * velk-replay from end to end.
 */
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "ToolRun.h"
#include "TuningTexts.h"

namespace desk {
namespace {

using nlohmann::json;
using Arguments = std::vector<std::string>;

constexpr const char* kSession =
        R"({"at_us": 0, "thread": "service", "call": "init", "scenario": 6, "customization": 9, "queryMaxEfficientFreq": true, "tuningParam2": 80}
{"at_us": 1000, "thread": "preview", "call": "notifyTaskStart", "key": "0x10", "task": 5, "groupHead": 0, "extraFlag1": 2}
{"at_us": 1500, "thread": "video", "call": "notifyTaskStart", "key": "0x20", "task": 3}
{"at_us": 2000, "thread": "service", "call": "notifyCamFps", "fps": 29.97}
{"at_us": 2100, "thread": "service", "call": "notifyVSync"}
{"at_us": 2200, "thread": "video", "call": "notifySingleShotCriticalTaskStart", "task": 3}
{"at_us": 2300, "thread": "preview", "call": "notifyTaskEnd", "key": "0x10", "task": 5}
{"at_us": 2400, "thread": "preview", "call": "notifyTaskEnd", "key": "0x99", "task": 5}
{"at_us": 2500, "thread": "preview", "call": "notifyTaskStart", "key": "0x10", "task": 5}
{"at_us": 2600, "thread": "service", "call": "uninit"}
)";

constexpr const char* kTable =
        R"(     time ms  thread        command        verdict      fields
       0.000  service       open           accepted
       0.000  service       init           accepted     driverParam=0 clusterLevels=[10,20,30] maxEfficientFreqs=[1400000,2000000,2600000] tuningParam1=10 tuningParam2=80
       0.000  service       singleShot     accepted     tid=# uclampLevels=[] percentLevel=-1 requestValue=-1 auxValue=0 rangeLevels1=[11,21,31] rangeLevels2=[] rangeLevels3=[] isReset=0 auxFlag=0 criticalTaskIds=[] criticalTaskUclamps=[] limits=[] passFlag=0 sharedFlag=0 extraValues=[-1,-1,-1]
       1.000  preview       taskInit       accepted     uniqueTaskId=1 defaultUclamp=400 targetTime=5 taskSpecValue=7 isVIPTask=1 extraFlag0=0 extraFlag1=2 taskName="RENDER"
       1.000  preview       taskStart      accepted     tid=# uniqueTaskId=1
       1.500  video         taskInit       accepted     uniqueTaskId=2 defaultUclamp=320 targetTime=900 taskSpecValue=-1 isVIPTask=0 extraFlag0=0 extraFlag1=0 taskName="SCALE"
       1.500  video         taskStart      accepted     tid=# uniqueTaskId=2
       2.000  service       camFps         accepted     fps=29
       2.100  service       vsync          accepted
       2.200  video         criticalStart  accepted     tid=# criticalValue=320
       2.300  preview       taskEnd        accepted     tid=# uniqueTaskId=1
       2.400  preview       -              returned -1  notifyTaskEnd in line 8
       2.500  preview       taskStart      accepted     tid=# uniqueTaskId=1
       2.600  service       uninit         accepted
       2.600  service       close          accepted
)";

constexpr const char* kSummary =
        R"(Session standard input
  10 calls on 3 threads, 0.003 s recorded, #

Commands                accepted     noted   refused   as told
     open                      1         0         0         0
  27 init                      1         0         0         0
  28 taskInit                  2         0         0         0
  29 taskStart                 3         0         0         0
  30 taskEnd                   1         0         0         0
  32 uninit                    1         0         0         0
  33 vsync                     1         0         0         0
  34 camFps                    1         0         0         0
  35 singleShot                1         0         0         0
  36 criticalStart             1         0         0         0
     close                     1         0         0         0

Tasks                     starts     ended target us   mean us    max us  over target
   3 SCALE                     1         0       900         0         0            0
   5 RENDER                    2         1         5      1300      1300            1

Registrations
  2 accepted, 0 refused, 0 of these replayed

Calls that returned -1                       as told  unexpected
  notifyTaskEnd                                    0           1  first in line 8

Still active at the end
  preview runs task 5 RENDER since 2.500 ms
  video runs task 3 SCALE since 1.500 ms
  video is in a critical span of value 320 since 2.200 ms
)";

class Replay : public testing::Test {
  protected:
    Replay() {
        std::filesystem::create_directories(mFolder);
        write("platform.json", kPlatformText);
        write("customer.json", kCustomerText);
        write("settings.json", kSettingsText);
    }
    ~Replay() override { std::filesystem::remove_all(mFolder); }

    void write(const char* file, const std::string& text) const {
        std::ofstream(mFolder / file) << text;
    }
    std::string path(const char* file) const { return mFolder / file; }

    Arguments with(const Arguments& more) const {
        Arguments all = {"-", "--tuning", mFolder};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    // The part of the output from this line on.
    static std::string from(const std::string& text, const std::string& start) {
        const size_t place = text.find(start);
        return place == std::string::npos ? text : text.substr(place);
    }

    const std::filesystem::path mFolder =
            std::filesystem::path(testing::TempDir()) / ("replay-" + std::to_string(getpid()));
};

// The active ones are listed by thread id, and those are the kernel's choice.
std::string sortLinesAfter(const std::string& text, const std::string& heading) {
    const size_t place = text.find(heading);
    std::istringstream rest(text.substr(place + heading.size()));
    std::multiset<std::string> lines;
    for (std::string line; std::getline(rest, line);) {
        lines.insert(line + "\n");
    }
    std::string sorted = text.substr(0, place + heading.size());
    for (const std::string& line : lines) {
        sorted += line;
    }
    return sorted;
}

TEST_F(Replay, PrintsEveryCommandAndTheSum) {
    const ToolOutcome outcome = runTool(with({}), kSession);
    const std::string expected = std::string(kTable) + "\n" + kSummary;
    const std::string heading = "Still active at the end\n";
    EXPECT_EQ(sortLinesAfter(normalise(outcome.out), heading), sortLinesAfter(expected, heading));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Replay, PrintsJsonLinesThatEndWithTheSum) {
    const ToolOutcome outcome =
            runTool(with({"--format", "jsonl", "--driver", "29=EINVAL*1"}), kSession);
    std::vector<json> rows;
    std::istringstream lines(normalise(outcome.out));
    for (std::string line; std::getline(lines, line);) {
        // Normalised numbers are no JSON.
        rows.push_back(json::parse(std::regex_replace(line, std::regex(":#"), ":0")));
    }
    ASSERT_EQ(rows.size(), 17U);
    EXPECT_EQ(rows[0], json::parse(R"({"at_us": 0, "line": 1, "thread": "service", "call": "init",
        "command": "open", "accepted": true})"));
    EXPECT_EQ(rows[3], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "command": "taskInit", "number": 28, "accepted": true,
        "fields": {"uniqueTaskId": 1, "defaultUclamp": 400, "targetTime": 5, "taskSpecValue": 7,
                   "isVIPTask": 1, "extraFlag0": 0, "extraFlag1": 2, "taskName": "RENDER"}})"));
    EXPECT_EQ(rows[4], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "command": "taskStart", "number": 29, "accepted": false,
        "errno": "EINVAL", "asTold": true, "fields": {"tid": 0, "uniqueTaskId": 1}})"));
    EXPECT_EQ(rows[5], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "returned": -1, "asTold": true})"));

    const json& summary = rows.back().at("summary");
    EXPECT_EQ(summary.at("calls"), 10);
    EXPECT_EQ(summary.at("commands").at("taskStart"),
              json::parse(R"({"accepted": 2, "noted": 0, "refused": 0, "refusedAsTold": 1})"));
    EXPECT_EQ(summary.at("operations").at("notifyTaskEnd"),
              json::parse(R"({"calls": 2, "failedAsTold": 0, "failed": 1, "firstFailedLine": 8})"));
    EXPECT_EQ(summary.at("operations").at("notifyTaskStart"),
              json::parse(R"({"calls": 3, "failedAsTold": 1, "failed": 0})"));
    EXPECT_EQ(summary.at("tasks")[1],
              json::parse(R"({"task": 5, "name": "RENDER", "starts": 1, "ends": 0,
                  "targetTimeUs": 5, "totalRunUs": 0, "longestRunUs": 0, "overTarget": 0})"));
    EXPECT_EQ(summary.at("active").at("spans"),
              json::parse(R"([{"thread": "video", "criticalValue": 320, "sinceUs": 2200}])"));
    EXPECT_EQ(outcome.status, 1);
}

constexpr const char* kInit =
        R"({"at_us": 0, "thread": "s", "call": "init", "scenario": 6, "customization": 9})"
        "\n";
constexpr const char* kStart =
        R"({"at_us": 1, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3})"
        "\n";
constexpr const char* kUninit = R"({"at_us": 2, "thread": "s", "call": "uninit"})"
                                "\n";

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
    const ToolOutcome outcome = run.finish();
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

// Slices and sections of every thread lie within one another, and nothing stays open.
TEST_F(Replay, WritesATraceWhoseSlicesNest) {
    const std::string overlapping =
            std::string(kInit) +
            R"({"at_us": 1, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3}
{"at_us": 5, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 5}
{"at_us": 9, "thread": "p", "call": "notifyTaskEnd", "key": "0x1", "task": 3}
{"at_us": 9, "thread": "p", "call": "notifyVSync"}
{"at_us": 9, "thread": "p", "call": "notifyCamFps", "fps": 30}
{"at_us": 9, "thread": "p", "call": "notifySingleShotControl", "control": {"percentLevel": 70}}
)";
    EXPECT_EQ(runTool(with({"-q", "--trace", path("trace.json")}), overlapping).status, 0);
    const json trace = json::parse(std::ifstream(path("trace.json")));

    std::map<int, std::vector<std::string>> open;
    std::map<int, double> last;
    std::vector<std::string> tasks;
    std::vector<std::string> others;
    for (const json& event : trace.at("traceEvents")) {
        const std::string phase = event.at("ph");
        if (phase == "C" || phase == "i") {
            others.push_back(event.at("name").get<std::string>() +
                             event.value("args", json()).dump());
        }
        if (phase != "B" && phase != "E") {
            continue;
        }
        const int thread = event.at("tid");
        EXPECT_GE(event.at("ts").get<double>(), last[thread]);
        last[thread] = event.at("ts");
        if (phase == "B") {
            open[thread].push_back(event.at("name"));
        } else {
            ASSERT_FALSE(open[thread].empty());
        }
        const std::string& name = open[thread].back();
        if (!name.starts_with("VELK::")) {
            tasks.push_back(phase + " " + name);
        }
        if (phase == "E") {
            open[thread].pop_back();
        }
    }
    for (const auto& [thread, slices] : open) {
        EXPECT_TRUE(slices.empty()) << slices.front();
    }
    EXPECT_EQ(tasks, (std::vector<std::string>{"B SCALE", "B RENDER", "E RENDER", "E SCALE",
                                               "B RENDER", "E RENDER"}));
    EXPECT_EQ(others, (std::vector<std::string>{"vsyncnull", R"(fps{"fps":30})",
                                                R"(percentLevel{"percentLevel":70})"}));
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
        argument = std::regex_replace(argument, std::regex("FOLDER"), mFolder.string());
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
