/*
 * velk-tuning as its users run it.
 */
#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "ReplayFixture.h"
#include "ToolRun.h"

namespace desk {
namespace {

class Tune : public Replay {
  protected:
    ToolOutcome tune(const Arguments& arguments, const std::string& input = "") const {
        ToolOutcome outcome = runTool(arguments, input, VELK_TUNING_PROGRAM);
        for (std::string* text : {&outcome.out, &outcome.err}) {
            for (size_t place = 0; (place = text->find(mFolder)) != std::string::npos;) {
                text->replace(place, mFolder.string().size(), "DIR");
            }
        }
        return outcome;
    }
};

constexpr const char* kOddSession =
        R"({"at_us": 0, "thread": "s", "call": "markCriticalTask", "user": 99}
{"at_us": 1, "thread": "s", "call": "init", "scenario": 4, "customization": 9}
{"at_us": 1, "thread": "s", "call": "init", "scenario": 7, "customization": 9}
{"at_us": 2, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3}
{"at_us": 3, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 24}
{"at_us": 4, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 7}
{"at_us": 5, "thread": "p", "call": "notifySingleShotControl", "control": {"category": 6}}
{"at_us": 6, "thread": "p", "call": "notifyResetSingleShotControl", "category": 6}
{"at_us": 7, "thread": "p", "call": "notifySingleShotControl", "category": 5}
{"at_us": 8, "thread": "p", "call": "markCriticalTask"}
{"at_us": 9, "thread": "p", "call": "notifyAnchorPointStart", "anchor": 1, "serial": 3}
{"at_us": 10, "thread": "s", "call": "uninit"}
{"at_us": 11, "thread": "s", "call": "uninit"}
{"at_us": 12, "thread": "s", "call": "init", "scenario": 1, "customization": 9}
{"at_us": 13, "thread": "p", "call": "notifyAnchorPointEnd", "anchor": 2, "serial": 3}
)";

TEST_F(Tune, CheckNamesWhatIsLegalAndWrong) {
    write("customer.json", R"({"variants": [
        {"scenario": 1, "tasks": [{"task": 24, "name": "J", "targetTimeUs": 0, "defaultUclamp": 1}]}],
        "anchorSpecs": [{"scenario": 1, "anchors": [{"anchor": 7, "latencyUs": 5}]}]})");
    write("settings.json", R"({"maxEfficientFreqsKhz": [3, 2, 4], "singleShotControls": [
        {"category": 5, "scenario": 8, "control": {"criticalTaskUclamps": [[9, 1], [9, 2], [3, 3]],
                                                   "uclampLevels": [5, 0, 4, 1]}}]})");
    const ToolOutcome outcome = tune({"check", mFolder, "-", "--strict"}, kOddSession);
    EXPECT_EQ(outcome.out,
              "warning: DIR/platform.json: /variants/0: task 5 has a targetTimeUs of 3, which "
              "reaches the driver as 5, expected at least 5\n"
              "warning: DIR/customer.json: /variants/0: task 24 has a targetTimeUs of 0, and every "
              "start of it fails, expected at least 1\n"
              "warning: DIR/settings.json: /maxEfficientFreqsKhz: found [3, 2, 4], which decrease, "
              "expected figures that do not decrease from cluster to cluster\n"
              "warning: DIR/settings.json: /singleShotControls: category 5, scenario 8: "
              "uclampLevels: found [5, 0, 4], which decrease, expected figures that do not "
              "decrease from cluster to cluster\n"
              "warning: DIR/settings.json: /singleShotControls: category 5, scenario 8: "
              "criticalTaskUclamps name task 9, which no variant knows, expected tasks of a "
              "variant\n"
              "warning: standard input:6: task: task 7 is known to no variant, expected a task of "
              "the tuning data\n"
              "warning: standard input:5: task: task 24 is not known to the variant that serves "
              "scenario 4 and customization 9, expected a task of the tuning data\n"
              "warning: standard input:10: category: category 4 has no control, expected one in "
              "settings.json for scenario 4 or 8\n"
              "warning: standard input:11: anchor: anchor 1 has no target, expected one in the "
              "anchor specs of scenario 4 and customization 9\n"
              "warning: DIR/platform.json: /anchorSpecs/0: targets of anchor 1, which no session "
              "passes, expected targets of anchors that the pipeline passes\n"
              "warning: DIR/customer.json: /anchorSpecs/0: targets of anchor 7, which no session "
              "passes, expected targets of anchors that the pipeline passes\n");
    EXPECT_EQ(outcome.err, "velk-tuning: DIR: 0 faults, 11 warnings\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(tune({"check", mFolder}).status, 0);
}

TEST_F(Tune, CheckNamesWhatCanNeverBeChosen) {
    write("platform.json",
          R"({"variants": [{"scenario": 1, "clusterLevels": [4, 5, 3, 0, 0, 0, 0, 0],
        "clusterDefaultLevels": [4, 0, 3], "tasks": []}],
        "anchorSpecs": [{"scenario": 2, "anchors": []}]})");
    const std::string out = tune({"check", mFolder, "-"}, kOddSession).out;
    for (const char* const problem :
         {"platform.json: /variants/0/clusterLevels: found [4, 5, 3], which decrease",
          "platform.json: /variants/0/clusterDefaultLevels: found [4, 0, 3], which decrease",
          "platform.json: /anchorSpecs/0: is never chosen: no variant of platform.json serves",
          "input:2: init: scenario 4 and customization 9: no variant fits"}) {
        EXPECT_NE(out.find(problem), std::string::npos) << problem << "\n" << out;
    }
}

TEST_F(Tune, CheckNamesEveryFaultOfTuningAndSessions) {
    write("platform.json",
          R"({"variants": [{"tasks": [1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
        1, 1, 1, 1, 1, 1, 1, 1, 1]}]})");
    write("settings.json", "{");
    const ToolOutcome outcome =
            tune({"check", mFolder, "-"}, "{}\n" + std::string(kInit) + "{\n" + kStart);
    EXPECT_EQ(std::ranges::count(outcome.out, '\n'), 27 + 1 + 2) << outcome.out;
    EXPECT_NE(outcome.out.find("standard input:3: line: no JSON"), std::string::npos);
    EXPECT_EQ(outcome.status, 2);
    const std::string err =
            tune({"compare", mFolder, mFolder, VELK_SAMPLES "/capture-5s.jsonl"}).err;
    EXPECT_NE(err.find("\nvelk-tuning: DIR/"), std::string::npos) << err;
}

constexpr const char* kSample = VELK_SAMPLES "/capture-5s.jsonl";
constexpr const char* kSampleTuning = VELK_SAMPLES "/tuning";

// The lines of one text that the other does not have.
std::string without(const std::string& text, const std::string& other) {
    std::istringstream lines(text);
    std::string left;
    for (std::string line; std::getline(lines, line);) {
        left += other.find(line + "\n") == std::string::npos ? line + "\n" : "";
    }
    return left;
}

TEST_F(Tune, SuggestChangesTheTargetsAloneAndCompareShowsThem) {
    const std::string better = path("better");
    const ToolOutcome outcome = tune({"suggest", kSample, "--base", kSampleTuning, "-o", better});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(
            without(outcome.out, ""),
            "                    times  p90 us  target us  new us  why\n"
            "  task 2              150     763       1000     800  p90 rounded up\n"
            "  task 3              150    1719       2000    1800  p90 rounded up\n"
            "  task 5              149   33376      33400   33400  as it was\n"
            "  task 6              149   32864      32900   32900  as it was\n"
            "  task 7              149   32496      32500   32500  as it was\n"
            "  task 9              150    2514       2600    2600  as it was\n"
            "  task 10             150     166        200     200  as it was\n"
            "  task 11             150      14        100     100  as it was\n"
            "  task 12             150      25        100     100  as it was\n"
            "  task 24               5    8253       2000       -  left alone: too few for p90, at "
            "least 10\n"
            "  task 25               5    7193       1000       -  left alone: too few for p90, at "
            "least 10\n"
            "  anchor 1 latency    149   20048      20100   20100  as it was\n"
            "  anchor 2 latency    150    2510       2600    2600  as it was\n"
            "  anchor 1 jitter     148      71        500     100  p90 rounded up\n"
            "  anchor 2 jitter     149     797       3000     800  p90 rounded up\n");
    for (const char* const file : {"/customer.json", "/settings.json"}) {
        EXPECT_EQ(readFile(better + file), readFile(kSampleTuning + std::string(file)));
    }
    EXPECT_EQ(
            without(readFile(better + "/platform.json"),
                    readFile(kSampleTuning + std::string("/platform.json"))),
            R"(                {"task": 2, "name": "TASK_SENSOR", "targetTimeUs": 800, "defaultUclamp": 200, "vip": true},
                {"task": 3, "name": "TASK_TUNE", "targetTimeUs": 1800, "defaultUclamp": 260},
                {"anchor": 1, "latencyUs": 20100, "jitterUs": 100},
                {"anchor": 2, "latencyUs": 3000, "jitterUs": 800}
)");
    const ToolOutcome changes = tune({"compare", kSampleTuning, better, kSample});
    EXPECT_EQ(changes.out, "A: " + std::string(kSampleTuning) + "\nB: DIR/better\n\n" + kSample +
                                   "\nRegistrations\n"
                                   "  task 2  targetTime  1000   800\n"
                                   "  task 3  targetTime  2000  1800\n"
                                   "Targets of anchors\n"
                                   "  anchor 1  jitterTarget   500  100\n"
                                   "  anchor 2  jitterTarget  3000  800\n"
                                   "Runs and passes\n"
                                   "  task 2    overTarget        6  12\n"
                                   "  task 3    overTarget        7  10\n"
                                   "  anchor 1  overJitterTarget  0   4\n"
                                   "  anchor 2  overJitterTarget  1  14\n");
    EXPECT_EQ(changes.status, 1);
    EXPECT_EQ(tune({"compare", better, better, kSample}).status, 0);
    EXPECT_EQ(tune({"suggest", kSample, "--base", better, "-o", better}).status, 2);
    EXPECT_EQ(tune({"check", better, kSample, "--strict"}).status, 0);
}

TEST_F(Tune, SuggestNeedsNoBaseAndLearnsFromSeveralSessions) {
    const std::string made = path("made");
    const ToolOutcome outcome =
            tune({"suggest", kSample, kSample, "-o", made, "--percentile", "90"});
    EXPECT_NE(outcome.out.find("  task 24              10    8248          -    8300  added: p90"),
              std::string::npos)
            << outcome.out;
    EXPECT_NE(readFile(made + "/customer.json").find(R"("TASK_24", "targetTimeUs": 8300)"),
              std::string::npos);
    write("nothing.jsonl", std::string(kInit) + kStart + kUninit);
    EXPECT_EQ(tune({"suggest", path("nothing.jsonl"), "-o", path("none")}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(path("none")));
}

TEST_F(Tune, CompareShowsControlsAndFailuresThatATuningChanges) {
    std::string settings = readFile(kSampleTuning + std::string("/settings.json"));
    settings.replace(settings.find("80"), 2, "85");
    write("settings.json", settings);
    const std::string out = std::regex_replace(
            tune({"compare", kSampleTuning, mFolder, kSample}).out, std::regex(" +"), " ");
    for (const char* const row :
         {"Registrations\n init command clusterLevels [300,420,512] [3,0,0]\n task 10 sent 1 time "
          "-\n",
          "\n notifySingleShotControl(category=5) from line 12 percentLevel 80 85\n",
          "Critical spans\n critical span of task 9 sent 150 times -\n",
          " notifyTaskStart failed 0 "}) {
        EXPECT_NE(out.find(row), std::string::npos) << row << "\n" << out;
    }
}

TEST_F(Tune, CompareShowsChangesOfTimesBesideTheSpread) {
    std::ofstream slow(path("slow.jsonl"));
    std::istringstream lines(readFile(kSample));
    for (std::string line; std::getline(lines, line);) {
        auto call = nlohmann::ordered_json::parse(line);
        call["at_us"] = 2 * call["at_us"].get<int64_t>();
        slow << call.dump() << "\n";
    }
    slow.close();
    const std::string out = tune({"compare", kSampleTuning, kSample, path("slow.jsonl")}).out;
    for (const char* const row :
         {"  task 5 SCALE run         149      149     33312     66624     33376     66752     "
          "+33312        128        +260.25\n",
          "  anchor 1 jitter          148      148 ",
          "  boost of category 5        5        5      1143      2286      8253     16506      "
          "+1143      14220          +0.08\n",
          "  merged percent level 80   0.3 %   0.3 %    +0.0\n"}) {
        EXPECT_NE(out.find(row), std::string::npos) << row << "\n" << out;
    }
}

}  // namespace
}  // namespace desk
