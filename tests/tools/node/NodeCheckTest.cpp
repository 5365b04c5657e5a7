/*
 * velk-node-check on the desk's model of a driver, and on drivers that are wrong.
 */
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ToolOnNode.h"

namespace desk {
namespace {

constexpr const char* kTool = VELK_NODE_CHECK_PROGRAM " --format json --commands 5000";

// The names of the checks that have such findings.
std::vector<std::string> checksWith(const nlohmann::json& report, const char* kind) {
    std::vector<std::string> names;
    for (const auto& check : report.at("checks")) {
        if (check.at(kind).at("count") != 0) {
            names.push_back(check.at("name"));
        }
    }
    return names;
}

TEST(NodeCheck, PassesOnTheDesksStrictModel) {
    const NodeOutcome outcome = runOnNode({VELK_NODE_LIBRARY}, "", VELK_NODE_CHECK_PROGRAM);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(outcome.output.find("FAILED"), std::string::npos) << outcome.output;
    // The model is one of a process: what a kernel knows of files and children, it does not.
    EXPECT_NE(outcome.output.find("passed: 0 wrong answers, 2 lenient ones, seed 1;"),
              std::string::npos)
            << outcome.output;
    EXPECT_EQ(runOnNode({VELK_NODE_LIBRARY}, "", std::string(kTool) + " --strict").status, 1);
}

struct WrongDriver {
    const char* environment;
    std::vector<std::string> wrong;  // checks
};

TEST(NodeCheck, NamesWhatIsWrongWithADriver) {
    using Names = std::vector<std::string>;
    for (const WrongDriver& c : {
                 WrongDriver{"SECOND_NODE_FAULTS=camFps=EIO*1", {"values"}},
                 {"SECOND_NODE_FAULTS='28=EINVAL*1, 36=ENOMEM*1'", {"values"}},
                 {"SECOND_NODE_ANSWERS=22:0", {"ranges", "threadIds", "random"}},
                 {"SECOND_NODE_ANSWERS=22:5",
                  {"ranges", "zeros", "relations", "tasks", "threadIds", "random"}},
                 {"SECOND_NODE_ANSWERS=25:22", {"requests"}},
                 {"SECOND_NODE_ANSWERS=14:0", {"pointers"}},
         }) {
        const NodeOutcome outcome = runOnNode({VELK_SECOND_NODE}, c.environment, kTool);
        EXPECT_EQ(outcome.status, 1) << c.environment;
        const auto report = nlohmann::json::parse(outcome.output, nullptr, false);
        ASSERT_FALSE(report.is_discarded()) << outcome.output;
        EXPECT_EQ(checksWith(report, "wrong"), c.wrong) << c.environment;
    }
    const NodeOutcome lenient = runOnNode({VELK_SECOND_NODE}, "SECOND_NODE_ANSWERS=22:0", kTool);
    EXPECT_EQ(checksWith(nlohmann::json::parse(lenient.output), "lenient"),
              (Names{"zeros", "relations", "tasks", "threadIds", "files", "random"}));
}

TEST(NodeCheck, ItsUsageIsChecked) {
    struct Case {
        const char* arguments;
        int status;
        const char* text;
    };
    for (const Case& c : {
                 Case{"--help", 0, "Exit status:"},
                 {"--version", 0, "velk-node-check "},
                 {"--seed 4294967296", 2,
                  "--seed: found \"4294967296\", expected a whole number from 0 to 4294967295"},
                 {"--format xml", 2, "--format: found \"xml\", expected text or json"},
                 {"--seed", 2, "--seed: needs a value"},
                 {"--check dying", 2, "--check: found \"dying\", expected one of: values orders"},
                 {"--sede", 2, "--sede: unknown option"},
                 {"1", 2, "1: found an argument, expected options alone"},
                 {"", 2, "/proc/velk/velk_ioctl: No such file or directory"},
         }) {
        const NodeOutcome outcome =
                runOnNode({}, "", std::string(VELK_NODE_CHECK_PROGRAM " ") + c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_NE(outcome.output.find(c.text), std::string::npos) << outcome.output;
    }
    EXPECT_EQ(runOnNode({VELK_NODE_LIBRARY}, "", std::string(kTool) + " >/dev/full").status, 2);
}

}  // namespace
}  // namespace desk
