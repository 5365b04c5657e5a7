/*
 * velk-replay --node real, with a second driver where the kernel's is.
 */
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "ToolOnNode.h"
#include "play/KernelCounts.h"

namespace desk {
namespace {

constexpr const char* kTool = VELK_REPLAY_PROGRAM " '" VELK_SAMPLES
                                                  "/capture-5s.jsonl' --quiet --node real "
                                                  "--tuning '" VELK_SAMPLES "/tuning'";

struct Case {
    const char* environment;
    int status;
    const char* told;
    size_t differences;
};

TEST(RealNode, TellsEveryAnswerThatIsNotTheModels) {
    for (const Case& c : {
                 Case{"", 0, "Calls that returned -1                      injected  unexpected\n",
                      0},
                 {"SECOND_NODE_FAULTS=taskInit=EINVAL*3", 1,
                  "velk-replay: taskInit: the kernel answers EINVAL, the model 0: uniqueTaskId=1 ",
                  3},
                 {"SECOND_NODE_FAULTS=vsync=EIO*2", 1,
                  "velk-replay: vsync: the kernel answers EIO, the model 0:", 2},
         }) {
        const NodeOutcome outcome =
                runOnNode({VELK_NODE_LIBRARY, VELK_SECOND_NODE}, c.environment, kTool);
        EXPECT_EQ(outcome.status, c.status) << outcome.output;
        EXPECT_NE(outcome.output.find(c.told), std::string::npos) << outcome.output;
        size_t differences = 0;
        for (size_t at = 0;
             (at = outcome.output.find("the kernel answers", at)) < std::string::npos; ++at) {
            ++differences;
        }
        EXPECT_EQ(differences, c.differences) << c.environment;
    }
}

TEST(RealNode, HasToBeThereAndTakesNoInjectedFaults) {
    const NodeOutcome absent = runOnNode({}, "", kTool);
    EXPECT_EQ(absent.status, 2);
    EXPECT_EQ(absent.output, "velk-replay: /proc/velk/velk_ioctl: No such file or directory\n");
    const NodeOutcome told = runOnNode({}, "", std::string(kTool) + " --driver 28=EINVAL");
    EXPECT_EQ(told.status, 2);
    EXPECT_NE(told.output.find("--driver: no fault can be injected into a real node"),
              std::string::npos);
    EXPECT_EQ(runOnNode({}, "", std::string(kTool) + " --node desk").status, 2);
}

TEST(RealNode, CountsAreHeldToTheModels) {
    DriverSnapshot model;
    model.commands[0].accepted = 1;
    model.commands[1] = {.accepted = 3, .noted = 0, .refusedInjected = 0, .refused = 2};
    const std::string others =
            "velk 1 clamps=0\nprocess 41 files=1\n  command init accepted=9 refused=9\n";
    const std::string own =
            "process 4 files=1\n  command init accepted=1 refused=0\n  task 1 name=x\n";
    std::istringstream same(others + own + "  command taskInit accepted=3 refused=2\n");
    EXPECT_EQ(differentCounts(same, 4, model), std::vector<std::string>());
    std::istringstream different(own + others + "  command taskInit accepted=3 refused=2\n");
    EXPECT_EQ(differentCounts(different, 4, model),
              (std::vector<std::string>{
                      "taskInit: the kernel has taken 0 and refused 0, the model 3 and 2"}));
}

}  // namespace
}  // namespace desk
