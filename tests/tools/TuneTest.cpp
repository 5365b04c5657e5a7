/*
 * velk-tuning as its users run it.
 */
#include <algorithm>

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
}

}  // namespace
}  // namespace desk
