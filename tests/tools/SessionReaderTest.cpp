/*
 * From lines of a session to calls, and what is said of lines that are none.
 */
#include "session/SessionReader.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "ControlMembers.h"
#include "support/TemporaryFolder.h"

namespace desk {
namespace {

struct ReadSession {
    std::vector<SessionCall> calls;
    std::vector<std::string> threads;
    std::string error = "none";  // without the name of the file
};

ReadSession readSession(const std::string& text) {
    const TemporaryFolder folder;
    const std::string path = folder.file("session.jsonl");
    std::ofstream(path) << text;
    InputFile input(path);
    SessionReader reader(input);
    ReadSession session;
    for (bool isLast = false; !isLast;) {
        SessionBlock block = reader.next();
        isLast = block.isLast;
        std::move(block.calls.begin(), block.calls.end(), std::back_inserter(session.calls));
        std::move(block.newThreads.begin(), block.newThreads.end(),
                  std::back_inserter(session.threads));
        if (block.error) {
            EXPECT_TRUE(block.error->starts_with(path + ":"));
            session.error = block.error->substr(path.size() + 1);
        }
    }
    return session;
}

struct FaultCase {
    const char* line;
    const char* error;
};

constexpr FaultCase kLineFaults[] = {
        {R"(notifyVSync)", "line: no JSON at column 2, expected one JSON document"},
        {R"({"at_us": 11, "thread": "t",)",
         "line: no JSON at column 29, expected one JSON document"},
        {R"({} {})", "line: no JSON at column 4, expected one JSON document"},
        {"{\"at_us\": 11, \"thread\": \"\xFF\"}",
         "line: no JSON at column 26, expected one JSON document"},
        {R"({"at_us": 1e999})",
         "at_us: found a number that is too large, expected a number in the range of a double"},
        {R"([17, 1.5, true, "call"])", R"(line: found [17,1.5,true,"call"], expected an object)"},
        {R"({"thread": "t", "call": "notifyVSync"})",
         "at_us: missing, expected a whole number from 0 to 1000000000000000"},
        {R"({"at_us": 9, "thread": "t", "call": "notifyVSync"})",
         "at_us: found 9, before the call ahead of it, expected at least 10"},
        {R"({"at_us": -1})", "at_us: found -1, expected a whole number from 0 to 1000000000000000"},
        {R"({"at_us": 18446744073709551615})",
         "at_us: found 18446744073709551615, expected a whole number from 0 to 1000000000000000"},
        {R"({"at_us": 11, "thread": null})",
         "thread: found null, expected a text of 1 to 64 printable characters"},
        {R"({"at_us": 11, "thread": "a\nb"})",
         R"(thread: found "a\nb", expected a text of 1 to 64 printable characters)"},
        {R"({"at_us": 11, "thread": "\u009b2J"})",
         R"(thread: found "\u009b2J", expected a text of 1 to 64 printable characters)"},
};

// Of a line that is good as far as its call.
struct CallFaultCase {
    const char* call;
    const char* members;
    const char* error;
};

constexpr CallFaultCase kCallFaults[] = {
        {"notifyTaskEnd", R"(, "keys": {"a": [1]}, "key": "0x1", "task": 3)",
         "keys: unknown key, expected one of at_us, thread, call, key, task"},
        {"notifyVSync", R"(, "task": 3)", "task: unknown key, expected one of at_us, thread, call"},
        {"notifyVSync", R"(, "": 5)", R"("": unknown key, expected one of at_us, thread, call)"},
        {"notifyVSync", R"(, "at_us": 12)",
         "at_us: duplicate key, expected each key once in its object"},
        {"notifyTaskEnd", R"(, "key": "0x1")",
         "task: missing, expected a whole number from -2147483648 to 2147483647"},
        {"markCriticalTask", R"(, "user": 4.5)",
         "user: found 4.5, expected a whole number from -2147483648 to 2147483647"},
        {"markCriticalTask", R"(, "user": {"id": 4})",
         R"(user: found {"id":4}, expected )"
         "a whole number from -2147483648 to 2147483647"},
        {"init", R"(, "scenario": true)",
         "scenario: found true, expected a whole number from -2147483648 to 2147483647"},
        {"init", R"(, "scenario": 1, "customization": 2, "queryMaxEfficientFreq": 1)",
         "queryMaxEfficientFreq: found 1, expected true or false"},
        {"notifyTaskStart", R"(, "key": "0x1", "task": 3, "extraFlag1": 256)",
         "extraFlag1: found 256, expected a whole number from 0 to 255"},
        {"notifyTaskEnd", R"(, "key": 5)",
         R"(key: found 5, expected a text such as "0x55fd" with at most 16 hexadecimal digits)"},
        {"notifyTaskEnd", R"(, "key": "5")",
         R"(key: found "5", expected a text such as "0x55fd" with at most 16 hexadecimal digits)"},
        {"notifyTaskEnd", R"(, "key": "0x10000000000000000")",
         R"(key: found "0x10000000000000000", expected a text such as "0x55fd" with at most 16 )"
         "hexadecimal digits"},
        {"notifyCamFps", R"(, "fps": 3.4028236e38)",
         "fps: found 3.4028236e+38, expected a number in the range of a 32-bit float"},
        {"notifySingleShotControl", "", "category: missing, expected one of category or control"},
        {"notifySingleShotControl", R"(, "category": 5, "control": {})",
         "category: not alone, expected one of category or control"},
        {"notifySingleShotControl", R"(, "control": [1])",
         "control: found [1], expected an object"},
        {"notifySingleShotControl", R"(, "control": {"limits": [1, 2, 3]})",
         "control/limits: found [1,2,3], expected an array of 4 elements"},
        {"notifySingleShotControl", R"(, "control": {"auxValue": 1, "auxValue": 2})",
         "control/auxValue: duplicate key, expected each key once in its object"},
};

// The fault stands between two good lines.
void expectFault(const std::string& line, const std::string& error) {
    const std::string good = R"({"at_us": 10, "thread": "t", "call": "notifyVSync"})";
    const ReadSession session = readSession(good + "\n" + line + "\n" + good + "\n");
    EXPECT_EQ(session.error, "2: " + error) << line;
    EXPECT_EQ(session.calls.size(), 1U);
}

TEST(SessionFaults, AreNamedAndEndTheSessionThere) {
    for (const FaultCase& c : kLineFaults) {
        expectFault(c.line, c.error);
    }
    expectFault(R"({"at_us": 11, "thread": "t", "call": "notifyVsync"})",
                "call: unknown call \"notifyVsync\", expected one of " + listCalls());
    for (const CallFaultCase& c : kCallFaults) {
        expectFault(
                fmt::format(R"({{"at_us": 11, "thread": "t", "call": "{}"{}}})", c.call, c.members),
                c.error);
    }
}

TEST(SessionReader, MakesCallsWithTheirArguments) {
    const ReadSession session = readSession(
            R"({"at_us": 0, "thread": "a", "call": "init", "driverParam": 4294967295, "scenario": 1, )"
            R"("customization": -2, "queryMaxEfficientFreq": true, "tuningParam1": -5, )"
            R"("tuningParam2": 80, "applyExtraDefaultControl": true})"
            "\r\n\n"
            R"({"task": 7, "key": "0xFFFFFFFFffffffff", "call": "notifyTaskStart", "thread": "b", "at_us": 5})"
            "\n"
            R"({"at_us": 5, "thread": "a", "call": "notifyTaskStart", "key": "0x0", "task": 24, "extraFlag1": 9})"
            "\n"
            R"({"at_us": 6, "thread": "b", "call": "notifySingleShotControl", "control": {"category": 3, )"
            R"("isReset": true, "percentLevel": 101, "uclampLevels": [4294967295], )"
            R"("criticalTaskUclamps": [[24, -1]]}})"
            "\n"
            R"({"at_us": 7, "thread": "b", "call": "notifyCamFps", "fps": 10000000000000000000})"
            "\n"
            R"({"at_us": 7, "thread": "b", "call": "setProperty", "name": "n", "value": ""})");
    ASSERT_EQ(session.error, "none");
    ASSERT_EQ(session.calls.size(), 6U);
    EXPECT_EQ(session.threads, (std::vector<std::string>{"a", "b"}));

    const CallArguments& init = session.calls[0].arguments;
    EXPECT_EQ(session.calls[0].info->name, "init");
    EXPECT_EQ(init.driverParam, 4294967295U);
    EXPECT_EQ(init.scenario, 1);
    EXPECT_EQ(init.customization, -2);
    EXPECT_EQ(init.queryMaxEfficientFreq, true);
    EXPECT_EQ(init.tuningParam1, -5);
    EXPECT_EQ(init.tuningParam2, 80);
    EXPECT_EQ(init.applyExtraDefaultControl, true);

    EXPECT_EQ(session.calls[1].line, 3U);
    EXPECT_EQ(session.calls[1].atUs, 5);
    EXPECT_EQ(session.calls[1].thread, 1U);
    const CallArguments& plainStart = session.calls[1].arguments;
    EXPECT_EQ(plainStart.key, reinterpret_cast<const void*>(UINTPTR_MAX));
    EXPECT_EQ(plainStart.extraFlag1, std::nullopt);
    EXPECT_EQ(session.calls[2].arguments.key, nullptr);
    EXPECT_EQ(session.calls[2].arguments.extraFlag1, 9);

    VELKSingleShotControl expected;
    expected.category = 3;
    expected.isReset = true;
    expected.percentLevel = 101;
    expected.uclampLevels = {4294967295};
    expected.criticalTaskUclamps = {{24, -1}};
    EXPECT_EQ(membersOf(*session.calls[3].arguments.control), membersOf(expected));
    EXPECT_EQ(session.calls[4].arguments.fps, 1e19F);
    EXPECT_EQ(session.calls[5].arguments.value, "");
}

TEST(SessionReader, KeepsLinesThatSpanChunks) {
    std::string text;
    constexpr uint64_t kLines = 3000;
    for (uint64_t line = 0; line < kLines; ++line) {
        text += R"({"at_us": )" + std::to_string(line) +
                R"(, "thread": "t", "call": "notifyVSync"})" + std::string(line % 97, ' ') + "\n";
    }
    const ReadSession session = readSession(text);
    ASSERT_EQ(session.error, "none");
    ASSERT_EQ(session.calls.size(), kLines);
    for (uint64_t line = 0; line < kLines; ++line) {
        ASSERT_EQ(session.calls[line].atUs, static_cast<int64_t>(line));
    }
    EXPECT_EQ(session.calls.back().endOffset, text.size());
}

TEST(SessionReader, BoundsLinesAndThreads) {
    const std::string line(SessionReader::kMaxLineLength, ' ');
    EXPECT_EQ(readSession(line + "\n" + line).error, "none");
    EXPECT_EQ(readSession("\n" + line + " \n").error,
              "2: line: too long, expected at most 1048576 bytes");
    EXPECT_EQ(readSession(line + line).error, "1: line: too long, expected at most 1048576 bytes");

    std::string text;
    for (size_t thread = 0; thread <= SessionReader::kMaxThreads; ++thread) {
        text += R"({"at_us": 0, "thread": "t)" + std::to_string(thread) +
                R"(", "call": "notifyVSync"})" + "\n";
    }
    const ReadSession session = readSession(text);
    EXPECT_EQ(session.error, "257: thread: one thread too many, expected at most 256 threads");
    EXPECT_EQ(session.calls.size(), SessionReader::kMaxThreads);
}

}  // namespace
}  // namespace desk
