// Bringing the library up and down: order of every step, the init record, the counts, and the
// descriptor that marking leaves behind.
#include <cerrno>
#include <cstring>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using LifecycleTest = LibraryTest;

TEST_F(LifecycleTest, FirstInitCreatesLastUninitDestroys) {
    init();
    hears(R"({init | open node = 100 | D: queryStaticData
        fetch convertor 0 scenario 3 customization 2 | fetch convertor 1 scenario 3 customization 0
        load convertor 0 | load convertor 1
        fetch anchors customization 2 | fetch customer anchors customization 2
        I: velk created | 0.getClusterLevel(0) | 0.getClusterLevel(1) | 0.getClusterLevel(2)
        ioctl 27 0:7 4:101 8:102 12:103 28:10 32:65 | I: [init] init done
        0.getClusterDefaultLevel(0) | 0.getClusterDefaultLevel(1) | 0.getClusterDefaultLevel(2)
        D: VELK::notifySingleShotControl:0 | {notifySingleShotControl
        ioctl 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 328:-1 332:-1 336:-1 | } | } | = 0)",
          kUsual | kQuery);
    init();
    hears("{init | I: gResource already exists | } | = 0");
    uninit();
    hears("{uninit | I: [uninit] velk uninit, usecount: 1 | } | = 0");
    uninit();
    hears(R"({uninit | I: [uninit] velk uninit, usecount: 0 | ioctl 32 | close 100
        destroy convertor 1 | destroy convertor 0 | } | = 0)");
    uninit();
    hears("= -1");
    EXPECT_EQ(0, init()) << "up again after going down";
}

TEST_F(LifecycleTest, InitRecordFollowsTheParameters) {
    const struct {
        VELKInitParams params;
        const char* sent;
    } cases[] = {{{.tuningParam1 = 0, .tuningParam2 = -5}, "28:10 32:65"},
                 {{.tuningParam1 = 7, .tuningParam2 = 80}, "28:7 32:80"},
                 {{.tuningParam1 = 1, .tuningParam2 = 0}, "28:1 32:65"},
                 {{.tuningParam1 = -1, .tuningParam2 = 1}, "28:10 32:1"},
                 {{.queryMaxEfficientFreq = true}, "16:1100 20:1200 24:1300 28:10 32:65"}};
    for (auto [params, sent] : cases) {
        node().reset();
        params.driverParam = 0x80000001;
        init(params);
        uninit();
        const std::string frequencies =
                params.queryMaxEfficientFreq
                        ? "fetch frequency 0 | fetch frequency 1 | fetch frequency 2"
                        : "";
        const std::string transcript = heard(kQuery | kPlatform | kNode);
        EXPECT_NE(std::string::npos,
                  transcript.find(expected("0.getClusterLevel(2) | " + frequencies +
                                           " | ioctl 27 0:-2147483647 4:101 8:102 12:103 " + sent +
                                           " | 0.getClusterDefaultLevel(0)")))
                << transcript;
    }
}

TEST_F(LifecycleTest, ExtraDefaultControlFollowsTheFirst) {
    VELKInitParams params = kParams;
    params.applyExtraDefaultControl = true;
    node().fail(35, EINVAL, 2);
    EXPECT_EQ(0, init(params)) << "the controls' results are ignored";
    hears(R"(open node = 100 | ioctl 27 0:7 4:101 8:102 12:103 28:10 32:65
        ioctl 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 328:-1 332:-1 336:-1 = -1
        ioctl 35 0:tid 36:-1 40:-1 328:1 332:-1 336:-1 = -1)",
          kNode);
    reset();
    reset();
    reset();
    hears(R"(ioctl 35 0:tid 36:-1 40:-1 144:1 328:1 332:-1 336:-1 | = 0
        ioctl 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 144:1 328:-1 332:-1 336:-1 | = 0 | = -1)",
          kNode | kResult);
}

TEST_F(LifecycleTest, AbsentNodeLeavesTheLibraryUp) {
    node().fail(kOpenNode, ENOENT);
    init();
    hears(R"({init | open node = -1 | D: queryStaticData | I: velk created
        D*: send ioctl command: 1076127515
        W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: No such file or directory
        W: ioctl invalid | I: [init] init done | D: VELK::notifySingleShotControl:0
        {notifySingleShotControl | D*: send ioctl command: 1096050467
        W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: No such file or directory
        W: ioctl invalid | } | } | = -1)",
          kUsual & ~kPlatform);
    init();
    uninit();
    uninit();
    uninit();
    hears(R"({init | I: gResource already exists | } | = 0
        {uninit | I: [uninit] velk uninit, usecount: 1 | } | = 0
        {uninit | I: [uninit] velk uninit, usecount: 0 | D*: send ioctl command: 1074030368
        W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: Success
        W: ioctl invalid | destroy convertor 1 | destroy convertor 0 | } | = -1 | = -1)");
}

TEST_F(LifecycleTest, NodeThatCannotBeOpenedIsTriedAgain) {
    for (const int error : {EACCES, EMFILE, EINTR}) {
        node().fail(kOpenNode, error, 1);
        init();
        uninit();
        vsync();
        hears(std::string("{init | open node = -1 | "
                          "W: [openVELKDevice] Can't open /proc/velk/velk_ioctl: ") +
              strerror(error) + R"( | I: velk created | E: VELK init fail @init | } | = -1 | = -1
            D*: no VELKResource exists, may haven't process init() | = -1)");
    }
    up();
}

TEST_F(LifecycleTest, RefusedInitStaysUpAndRefusedUninitGoesDown) {
    node().fail(27, EINVAL);
    EXPECT_EQ(-1, init());
    EXPECT_NE(std::string::npos, heard().find(expected(R"(
        ioctl 27 0:7 4:101 8:102 12:103 28:10 32:65 = -1
        D: [sendIOCtl] ioctlRet:-1, errno: Invalid argument | I: [init] init done
        D: VELK::notifySingleShotControl:0)")));
    vsync();
    node().fail(32, 0, kForever, 3);
    node().fail(kClose, EIO);
    uninit();
    vsync();
    hears(R"({notifyVSync | ioctl 33 | } | = 0
        {uninit | I: [uninit] velk uninit, usecount: 0 | ioctl 32 = 3
        D: [sendIOCtl] ioctlRet:3, errno: Success | close 100
        destroy convertor 1 | destroy convertor 0 | } | = -1
        D*: no VELKResource exists, may haven't process init() | = -1)");
}

TEST_F(LifecycleTest, FeatureSwitchStopsInitAndNothingElse) {
    platform().set(kForceOff, 1);
    init();
    hears("I*: force off velk | W*: VELK is not supported! | = -1", kUsual | kLock | kTags);
    platform().set(kForceOff, 0);
    up();
    platform().set(kForceOff, 1);
    EXPECT_EQ(-1, init());
    EXPECT_EQ(0, vsync());
    EXPECT_EQ(0, uninit()) << "the refused init was not counted";
    EXPECT_EQ(-1, uninit());
}

TEST_F(LifecycleTest, CreatingInitTakesOverTheDescriptorOfMarking) {
    unmark();
    heard();
    init();
    uninit();
    hears(R"(ioctl 27 0:7 4:101 8:102 12:103 28:10 32:65
        ioctl 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 328:-1 332:-1 336:-1
        ioctl 32 | close 100)",
          kNode);
    node().handOut(1);
    unmark();
    init();
    EXPECT_EQ(1U, recorder().count("ioctl@1 27")) << "1 is the least that is taken over";
    uninit();
    heard();
    node().handOut(102);
    unmark();
    hears("open node = 102 | ioctl@102 35 0:tid 36:-1 40:-1 328:-1 332:-1 336:-1", kNode);
}

TEST_F(LifecycleTest, DescriptorZeroIsNotTakenOver) {
    node().handOut(0);
    EXPECT_EQ(0, unmark());
    heard();
    EXPECT_EQ(-1, init());
    EXPECT_EQ(-1, uninit());
    hears("close 0", kNode);
    up();
    uninit();
    node().handOut(0);
    init();
    uninit();
    hears(R"(ioctl 32 | close 100 | open node = 0
        ioctl@0 27 0:7 4:101 8:102 12:103 28:10 32:65
        ioctl@0 35 0:tid 36:-1 40:-1 48:31 52:32 56:33 328:-1 332:-1 336:-1
        ioctl@0 32 | close 0)",
          kNode);
}

TEST_F(LifecycleTest, UninitFirstClosesTheDescriptorOfMarking) {
    unmark();
    heard();
    uninit();
    uninit();
    hears("close 100 | = -1 | = -1", kUsual | kTags);
    node().handOut(0);
    unmark();
    init();
    heard();
    uninit();
    hears(R"(close 0 | {uninit | I: [uninit] velk uninit, usecount: 0
        D*: send ioctl command: 1074030368
        W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: Success
        W: ioctl invalid | destroy convertor 1 | destroy convertor 0 | } | = -1)");
}

TEST_F(LifecycleTest, AbsentNodeOfMarkingIsRememberedUntilUninit) {
    node().fail(kOpenNode, ENOENT, 1);
    EXPECT_EQ(-1, unmark());
    heard();
    EXPECT_EQ(-1, unmark());
    EXPECT_EQ(-1, init());
    EXPECT_EQ(-1, vsync());
    hears("", kNode);
    EXPECT_EQ(-1, uninit());
    up();
}

TEST_F(LifecycleTest, EveryOperationButMarkingFailsWhileDown) {
    const std::string check = "no VELKResource exists, check init() | = -1";
    const std::string maybe = "no VELKResource exists, may haven't process init() | = -1";
    const std::pair<std::string, std::function<int()>> cases[] = {
            {"D: " + check, [] { return start(1, 5); }},
            {"D: " + check, [] { return start(1, 5, {}); }},
            {"D: " + check, [] { return end(1, 5); }},
            {"D: " + check, [] { return sceneChange(5, 1); }},
            {"D: " + check, [] { return control(VELKSingleShotControl{}); }},
            {"D: " + maybe, [] { return control(5); }},
            {"D: " + maybe, [] { return reset(5); }},
            {"D: " + maybe, [] { return reset(); }},
            {"D*: " + check, [] { return spanStart(5); }},
            {"D*: " + check, [] { return spanEnd(5); }},
            {"D*: " + check, [] { return anchorStart(1, 2); }},
            {"D*: " + check, [] { return anchorEnd(1, 2); }},
            {"D*: " + maybe, vsync},
            {"D*: " + maybe, [] { return camFps(30); }}};
    for (const auto& [transcript, operation] : cases) {
        operation();
        hears(transcript, kUsual | kTags);
    }
}

}  // namespace
}  // namespace fake
