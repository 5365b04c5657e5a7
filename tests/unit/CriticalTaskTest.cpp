// Marking and unmarking of critical work, with and without the library being up, and the span.
#include <cerrno>

#include "support/LibraryTest.h"

namespace fake {
namespace {

class CriticalTaskTest : public LibraryTest {
  protected:
    CriticalTaskTest() {
        platform().singleShots[4] = {{kScenario, {.auxValue = 43}},
                                     {VELK_SCENARIO_FALLBACK,
                                      {.uclampLevels = {7},
                                       .percentLevel = 0,
                                       .auxValue = 48,
                                       .criticalTaskUclamps = {{5, 9}},
                                       .limits = {6},
                                       .sharedFlag = true}}};
        platform().singleShots[9] = {{VELK_SCENARIO_FALLBACK, {.auxValue = 98}}};
        platform().singleShots[10] = {{kScenario, {.auxValue = 103}}};
        platform().singleShots[11] = {};
    }
};

// What marking without an instance begins with, and what it sends for user 4: nothing is merged.
const std::string kMarking =
        "{markCriticalTask | D*: no VELKResource exists, create temp devfd | fetch single shots | ";
const std::string kUnmerged = "ioctl 35 0:tid 4:7 40:-1 44:48 308:6 325:1 328:-1 332:-1 336:-1 | ";
const std::string kDefault = "ioctl 35 0:tid 36:-1 40:-1 328:-1 332:-1 336:-1 | ";

TEST_F(CriticalTaskTest, MarkWithoutInstanceSendsTheFallbackUnmerged) {
    for (const int user : {5, 10, 11}) {
        mark(user);
        hears(kMarking + "} | = 0");  // nothing to send, nothing opened
    }
    mark();
    hears(kMarking + "open node = 100 | " + kUnmerged + "} | = 0");
    mark(4);
    hears(kMarking + kUnmerged + "} | = 0");
    mark(9);
    hears("ioctl 35 0:tid 36:-1 40:-1 44:98 328:-1 332:-1 336:-1", kNode);
}

TEST_F(CriticalTaskTest, UnmarkWithoutInstanceSendsTheDefault) {
    unmark();
    hears("{unsetCriticalTask | open node = 100 | " + kDefault + "} | = 0");
    mark();
    unmark();
    hears(kUnmerged + kDefault, kNode);  // one descriptor for both
}

TEST_F(CriticalTaskTest, FailuresWithoutInstance) {
    const std::string cannot = R"(open node = -1
        W: [openVELKDevice] Can't open /proc/velk/velk_ioctl: Permission denied | } | = -1)";
    node().fail(kOpenNode, EACCES, 2);
    mark();
    hears(kMarking + cannot);
    unmark();
    hears("{unsetCriticalTask | " + cannot);
    node().fail(35, EIO, 2);
    mark();
    unmark();
    EXPECT_EQ(0, mark());
    EXPECT_EQ(expected(R"(D: [sendIOCtl] ioctlRet:-1, errno: Input/output error
                          D: [sendIOCtl] ioctlRet:-1, errno: Input/output error)"),
              heardLines("D: [sendIOCtl]"));
    uninit();
    heard();
    node().fail(kOpenNode, ENOENT, 1);
    const std::string invalid = R"(D*: send ioctl command: 1096050467
        W: [checkIOctlValid] Can't open /proc/velk/velk_ioctl: )";
    mark();
    hears(kMarking + "open node = -1 | " + invalid +
          "No such file or directory | W: ioctl invalid | } | = -1");
    mark();
    hears(kMarking + invalid + "Success | W: ioctl invalid | } | = -1");
}

TEST_F(CriticalTaskTest, MarkWithInstanceIsTheControlOfTheCategory) {
    up();
    mark();
    hears(R"({markCriticalTask | fetch single shots | D: VELK::notifySingleShotControl:4
        {notifySingleShotControl | fetch single shots
        ioctl 35 0:tid 36:-1 40:-1 44:43 328:-1 332:-1 336:-1 | } | } | = 0)");
    mark(5);
    hears(R"({markCriticalTask | fetch single shots
        E: Single shot setting of 5 not found @notifySingleShotControl | } | = -1)");
    node().fail(35, EIO, 1);
    EXPECT_EQ(-1, mark(9));
}

TEST_F(CriticalTaskTest, UnmarkWithInstanceIsAControlLikeAnyOther) {
    up();
    unmark();
    hears(R"({unsetCriticalTask | D: VELK::notifySingleShotControl:0 | {notifySingleShotControl
        )" +
          kDefault + "} | } | = 0");
    node().fail(35, EIO, 1);
    EXPECT_EQ(-1, unmark());
    EXPECT_EQ(-1, reset() + reset() + reset() + reset()) << "both on the stack, above init's own";
}

TEST_F(CriticalTaskTest, FeatureSwitchConcernsMarkingAlone) {
    platform().set(kForceOff, 1);
    mark();
    hears("I*: force off velk | W*: VELK is not supported! | = -1", kUsual | kTags | kLock);
    EXPECT_EQ(0, unmark());
    platform().set(kForceOff, 0);
    up();
    platform().set(kForceOff, 1);
    EXPECT_EQ(-1, mark());
    EXPECT_EQ(0, unmark());
}

TEST_F(CriticalTaskTest, SpanCarriesTheLargerOfDefaultAndActive) {
    up();
    spanStart(5);
    spanEnd(5);
    hears(R"({notifySingleShotCriticalTaskStart
        D*: [notifySingleShotCriticalTaskStart] notifySingleShotCriticalTaskStart
        ioctl 36 0:tid 4:200 | } | = 0
        {notifySingleShotCriticalTaskEnd
        D*: [notifySingleShotCriticalTaskEnd] notifySingleShotCriticalTaskEnd
        ioctl 37 0:tid | } | = 0)");
    const auto sends = [](int task, int value) {
        heard();
        spanStart(task);
        hears("ioctl 36 0:tid 4:" + std::to_string(value), kNode);
    };
    platform().sources[0].tasks[5].defaultUclamp = 3;
    control(VELKSingleShotControl{.criticalTaskUclamps = {{5, 2}, {5, 1}, {22, 900}}});
    sends(5, 3);
    control(VELKSingleShotControl{.criticalTaskUclamps = {{5, 7}, {5, 4}}});
    sends(5, 7);
    sends(20, 320);
    sends(22, 900);
    reset();
    sends(5, 3);
    reset();
    sends(22, 400);
    platform().sources[0].tasks[5].defaultUclamp = 1;
    sends(5, 1);
}

TEST_F(CriticalTaskTest, SpanOfAnUnknownTaskIsRefused) {
    platform().sources[0].tasks[1] = {100, 0};
    platform().sources[0].tasks[2] = {100, -1};
    platform().sources[0].tasks.erase(5);
    for (const bool isCustomer : {true, false}) {
        platform().sources[1].isMissing = !isCustomer;
        up();
        for (const int task : {1, 2, 3, 5, 21, isCustomer ? 23 : 22}) {
            const std::string reason =
                    " | D*: task: " + std::to_string(task) + " invalid | } | = -1";
            spanStart(task);
            hears("{notifySingleShotCriticalTaskStart" + reason);
            spanEnd(task);
            hears("{notifySingleShotCriticalTaskEnd" + reason);
        }
        EXPECT_EQ(0, spanStart(20));
        uninit();
        heard();
    }
}

}  // namespace
}  // namespace fake
