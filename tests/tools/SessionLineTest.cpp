/*
 * Lines that are written.
 */
#include "session/SessionLine.h"

#include <android-base/file.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "ControlMembers.h"
#include "session/LineReader.h"

namespace desk {
namespace {

std::string readText(const std::string& path) {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(path, &text)) << path;
    return text;
}

// The call of a line that has to be good.
SessionCall callOf(const std::string& line) {
    LineReader reader;
    SessionCall call;
    std::string_view thread;
    const auto fault = reader.read(line, call, thread);
    EXPECT_FALSE(fault) << line << fault->path << fault->problem;
    return call;
}

TEST(SessionLine, IsWrittenAsTheSampleHasIt) {
    std::istringstream sample(readText(VELK_SAMPLES "/capture-5s.jsonl"));
    LineReader reader;
    size_t lines = 0;
    for (std::string line; std::getline(sample, line); ++lines) {
        SessionCall call;
        std::string_view thread;
        ASSERT_FALSE(reader.read(line, call, thread)) << line;
        std::string written;
        appendSessionLine(written, call.atUs, thread, call.info->name, call.arguments);
        if (call.arguments.control != nullptr) {  // whose members can be written in several ways
            ASSERT_EQ(membersOf(*callOf(written).arguments.control),
                      membersOf(*call.arguments.control));
        } else {
            ASSERT_EQ(written, line + "\n");
        }
    }
    EXPECT_EQ(lines, 3944U);
}

TEST(SessionLine, KeepsEveryMemberOfAControl) {
    VELKSingleShotControl control;
    control.category = -7;
    control.uclampLevels = {0, 4294967295};
    control.percentLevel = 101;
    control.isReset = true;
    control.requestValue = 3;
    control.auxValue = 4;
    control.releaseRequest = true;
    control.auxFlag = true;
    control.rangeLevels1 = {5};
    control.rangeLevels2 = {6, 6};
    control.rangeLevels3 = {7};
    control.criticalTaskUclamps = {{9, 640}, {24, 900}, {24, -1}};
    control.limits = {8, 9, 10, 4294967295};
    control.passFlag = true;
    control.sharedFlag = true;
    control.extraValues = {12, -13, 14};
    CallArguments arguments;
    arguments.control = std::make_unique<const VELKSingleShotControl>(control);
    std::string line;
    appendSessionLine(line, 0, "t", "notifySingleShotControl", arguments);
    EXPECT_EQ(membersOf(*callOf(line).arguments.control), membersOf(control));
}

TEST(SessionLine, HoldsTheClosestToWhatASessionCannotHold) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    struct Case {
        std::string thread;
        std::string writtenThread;
        float fps;
        const char* writtenFps;
    };
    for (const Case& c : {
                 Case{"a\"b\\c", R"(a\"b\\c)", 29.97F, "29.97"},
                 {"", "?", NAN, "0"},
                 {"\x1b[2J\xff", R"(\\x1b[2J\\xff)", kInfinity, "3.4028235e+38"},
                 {std::string(63, 'n') + "\u00e9", std::string(63, 'n'), -kInfinity,
                  "-3.4028235e+38"},
         }) {
        CallArguments arguments;
        arguments.fps = c.fps;
        std::string line;
        appendSessionLine(line, 5, c.thread, "notifyCamFps", arguments);
        EXPECT_EQ(line, fmt::format("{{\"at_us\": 5, \"thread\": \"{}\", \"call\": "
                                    "\"notifyCamFps\", \"fps\": {}}}\n",
                                    c.writtenThread, c.writtenFps));
        EXPECT_EQ(callOf(line).info->name, "notifyCamFps");
    }
}

}  // namespace
}  // namespace desk
