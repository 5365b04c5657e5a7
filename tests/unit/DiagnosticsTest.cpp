// The log gate and the channel's own failures.
#include <cerrno>
#include <sstream>

#include "foundation/CommandChannel.h"
#include "support/LibraryTest.h"

namespace fake {
namespace {

class DiagnosticsTest : public LibraryTest {
  protected:
    // Logs messages of all four levels, gated and not: init without node and customer data.
    static std::string logMessages() {
        platform().sources[VELK_JSON_SOURCE_CUSTOMER].isMissing = true;
        node().fail(kOpenNode, ENOENT);
        init();
        std::string text = takeTranscript(kLog);
        while (uninit() == 0) {
        }
        takeTranscript();
        return text;
    }

    // The messages of logMessages() that pass, with the sink before each line.
    static std::string messages(const std::string& sink, const std::function<bool(char)>& passes) {
        std::istringstream all(expected(R"(
            D: queryStaticData | E: mpCustomJsonConvertor is nullptr @queryStaticData
            I: velk created | D*: send ioctl command: 1076127515
            W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: No such file or directory
            W: ioctl invalid | I: [init] init done | D: VELK::notifySingleShotControl:0
            D*: send ioctl command: 1096050467
            W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: No such file or directory
            W: ioctl invalid)"));
        std::string text;
        for (std::string line; std::getline(all, line);) {
            // Only the Android log's errors are decorated.
            const std::string own = sink == "ulogger " ? line.substr(0, line.find(" @")) : line;
            text += passes(line[0]) ? sink + own + '\n' : "";
        }
        return text;
    }
};

TEST_F(DiagnosticsTest, LevelsAndMaskDecideWhichMessagesPass) {
    for (const uint32_t level : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 0xFFFFFFFFU}) {
        for (const uint32_t mask : {0U, 0x1000U, 0x1000000U, 0x1001000U, 0xFFFFFFFFU}) {
            setLogSwitches(3, level, mask);
            const auto passes = [=](char letter) {
                return letter == 'E' || (letter == 'W' && level >= 2) ||
                       (letter == 'I' && level >= 3) ||
                       (letter == 'D' && level >= 5 && (mask & 0x1001000) == 0x1001000);
            };
            EXPECT_EQ(messages("", passes), logMessages()) << level << ' ' << mask;
        }
    }
}

TEST_F(DiagnosticsTest, ModeSelectsTheSinks) {
    const auto all = [](char) { return true; };
    const std::string both = messages("", all), android = messages("android ", all),
                      ulogger = messages("ulogger ", all);
    const std::pair<uint32_t, std::string> cases[] = {
            {0, ""},      {1, android}, {2, ulogger}, {8, ulogger},     {0xA, ulogger}, {4, ""},
            {5, android}, {3, both},    {9, both},    {0xFFFFFFF4, ""}, {~0U, both}};
    for (const auto& [mode, text] : cases) {
        setLogSwitches(mode);
        EXPECT_EQ(text, logMessages()) << mode;
    }
    setLogger(false);
    EXPECT_EQ(android, logMessages()) << "no logger object";
    setLogger(true);
    platform().formatterFails = true;
    EXPECT_EQ(android, logMessages()) << "the formatter fails";
}

TEST_F(DiagnosticsTest, LongMessageKeepsItsLengthAndLosesItsTail) {
    const std::string head = "[checkIOctlValid] Can't open /proc/velk/velk_ioctl: ";
    for (const size_t length : {1023U, 1024U, 2000U}) {
        platform().errorText = std::string(length - head.size(), 'x');
        call([] { return checkIOctlValid(-1); });
        const std::string whole = head + platform().errorText;
        expectTranscript(length == 1023 ? "W: " + whole + " | = 0"
                                        : "android W: " + whole +
                                                  " | ulogger W: " + whole.substr(0, 1023) +
                                                  " [length " + std::to_string(length) + "] | = 0");
    }
}

TEST_F(DiagnosticsTest, DebugLogPropertyIsReadOnceInAProcess) {
    vsync();
    EXPECT_LE(recorder().count("property vendor.debug.velk.debuglog"), 1U);
    takeTranscript();
    platform().set(kDebugLog, isDebugLogOn() ? 0 : 1);
    vsync();
    expectTranscript("D*: no VELKResource exists, may haven't process init() | = -1",
                     kUsual | kProperty);
    // The debug log is one more condition; level and mode still apply.
    setLogSwitches(3, 4);
    vsync();
    setLogSwitches(0);
    vsync();
    expectTranscript("= -1 | = -1");
}

TEST_F(DiagnosticsTest, EveryStateOfADescriptor) {
    const std::string cannot = "Can't open /proc/velk/velk_ioctl: ";
    const struct {
        int before, error, after;
        std::string opened, valid;
    } cases[] = {{5, 0, 5, "= 1", "= 1"},
                 {0, 0, 0, "= 1", "= 1"},
                 {-1, 0, 100, "open node = 100 | = 1", "= 1"},
                 {-1, ENOENT, -2, "open node = -1 | = 1",
                  "W: [checkIOctlValid] " + cannot + "Input/output error | = 0"},
                 {-1, EACCES, -1,
                  "open node = -1 | W: [openVELKDevice] " + cannot + "Permission denied | = 0",
                  "W: [checkIOctlValid] " + cannot + "Input/output error | = 0"},
                 {-2, 0, -2, "W: [openVELKDevice] " + cannot + "Success | = 0",
                  "W: [checkIOctlValid] " + cannot + "Input/output error | = 0"},
                 {-3, 0, -3, "= 1", "W: [checkIOctlValid] " + cannot + "Input/output error | = 0"}};
    for (const auto& c : cases) {
        node().reset();
        node().fail(kOpenNode, c.error, c.error == 0 ? 0 : 1);
        int32_t descriptor = c.before;
        call([&] { return openVELKDevice(descriptor); });
        expectTranscript(c.opened);
        EXPECT_EQ(c.after, descriptor);
        call([&] { return errno = EIO, checkIOctlValid(descriptor); });
        expectTranscript(c.valid);
    }
    node().reset();
}

// Each command in turn is refused in each way; the call fails, both sinks say why, and the same
// call succeeds afterwards on the same descriptor.
TEST_F(DiagnosticsTest, EveryCommandSaysWhyItFailed) {
    const struct {
        unsigned number;
        std::function<int()> operation;
    } commands[] = {{28, [] { return start(1, 5); }},
                    {29, [] { return start(1, 5); }},
                    {30, [] { return end(1, 5); }},
                    {31, [] { return sceneChange(6, 1); }},
                    {33, vsync},
                    {34, [] { return camFps(30); }},
                    {35, [] { return control(VELKSingleShotControl{}); }},
                    {35, [] { return reset(); }},
                    {35, unmark},
                    {36, [] { return spanStart(5); }},
                    {37, [] { return spanEnd(5); }},
                    {38, [] { return anchorStart(1, 2); }},
                    {38, [] { return anchorEnd(1, 2); }}};
    const struct {
        int error, result;
        const char* text;
    } failures[] = {{EINVAL, -1, "-1, errno: Invalid argument"},
                    {ENOTTY, -1, "-1, errno: Inappropriate ioctl for device"},
                    {EBADF, -1, "-1, errno: Bad file descriptor"},
                    {EINTR, -1, "-1, errno: Interrupted system call"},
                    {EIO, -1, "-1, errno: Input/output error"},
                    {0, 1, "1, errno: Success"},
                    {0, 25, "25, errno: Success"}};
    platform().anchors[kScenario][1] = {4000, 50};
    for (const auto& failure : failures) {
        const std::string message = std::string("D: [sendIOCtl] ioctlRet:") + failure.text + '\n';
        for (const auto& [number, operation] : commands) {
            SCOPED_TRACE(std::to_string(number) + ' ' + message);
            up();
            if (number != 28) {
                start(1, 5);
                start(2, 6);
                control(VELKSingleShotControl{});
            }
            takeTranscript();
            node().fail(number, failure.error, 1, failure.result);
            EXPECT_EQ(number == 28 ? 0 : -1, operation()) << "a registration is only owed";
            EXPECT_EQ(message, takeLines("D: [sendIOCtl]")) << "never retried";
            EXPECT_EQ(0, operation());
            EXPECT_EQ(0U, recorder().count("open"));
            EXPECT_EQ(0, uninit());
            node().reset();
            takeTranscript();
        }
    }
}

}  // namespace
}  // namespace fake
