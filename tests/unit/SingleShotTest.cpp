// Single-shot controls: validation, the record, the merge of what is active, and the settings.
#include <cerrno>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using Control = VELKSingleShotControl;
using Levels = std::vector<uint32_t>;

class SingleShotTest : public LibraryTest {
  protected:
    SingleShotTest() { up(); }

    // Expects the call to succeed with this record; what follows offset 328 is the default.
    static void sends(const std::string& words, const std::function<int()>& operation,
                      const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        heard();
        operation();
        hears("ioctl 35 0:tid" + words + " 328:-1 332:-1 336:-1 | = 0", kNode | kResult, file,
              line);
    }
    static void sends(const std::string& words, const Control& value,
                      const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        sends(
                words, [&] { return control(value); }, file, line);
    }
    static void resets(const std::string& words, int category = 0,
                       const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        sends(
                words, [=] { return reset(category); }, file, line);
    }
};

TEST_F(SingleShotTest, RecordCarriesEveryField) {
    for (const auto& [key, task] : {std::pair(1U, 5), {1U, 22}, {2U, 5}}) {
        start(key, task);
    }
    heard();
    control(Control{.category = 1,
                    .uclampLevels = {201, 202, 203, 204, 205, 206, 207, 208},
                    .percentLevel = 42,
                    .requestValue = 7,
                    .auxValue = -9,
                    .auxFlag = true,
                    .rangeLevels1 = {11, 12, 13, 14, 15, 16, 17, 18},
                    .rangeLevels2 = {21, 22, 23, 24, 25, 26, 27, 28},
                    .rangeLevels3 = {31, 32, 33, 34, 35, 36, 37, 38},
                    .criticalTaskUclamps = {{22, 700}, {5, 600}},
                    .limits = {71, 72, 73, 74},
                    .passFlag = true,
                    .sharedFlag = true,
                    .extraValues = {81, 82, 83}});
    const std::string middle =
            " 44:-9 48:11 52:12 56:13 60:14 64:15 68:16 72:17 76:18 80:21 84:22 88:23 92:24 96:25"
            " 100:26 104:27 108:28 112:31 116:32 120:33 124:34 128:35 132:36 136:37 140:38";
    const std::string tail = " 312:72 316:73 320:74 324:1 325:1 328:81 332:82 336:83 | } | = 0";
    hears(R"(D: VELK::notifySingleShotControl:1 | {notifySingleShotControl | fetch single shots
        D: add default control with category(1) to table(size=1)
        ioctl 35 0:tid 4:201 8:202 12:203 16:204 20:205 24:206 28:207 32:208 36:42 40:7)" +
          middle + " 145:1 148:1 152:3 156:2 228:600 232:600 236:700 308:71" + tail);
    reset(1);
    hears(R"(D: VELK::notifyResetSingleShotControl:1 | {notifyResetSingleShotControl
        fetch single shots
        ioctl 35 0:tid 4:101 8:102 12:103 16:104 20:105 24:106 28:107 32:108 36:-2 40:-2)" +
          middle + " 144:1 145:1 148:1 152:3 156:2 228:200 232:200 236:400 308:999999" + tail);
}

TEST_F(SingleShotTest, FieldsOfTheRecordAlone) {
    sends(" 36:-1 40:-1", Control{});
    sends(" 4:500 8:102 12:1024 36:-1 40:-1", {.uclampLevels = {500, 1, 1024}});
    sends(" 36:-1 40:-2", {.requestValue = 5, .releaseRequest = true});
    sends(" 36:-1 40:-2", {.releaseRequest = true});
    sends(" 36:-1", {.requestValue = 0});
    sends(" 36:-1 40:-1 48:1 80:1 84:2 112:1 116:2 120:3",
          {.rangeLevels1 = {1}, .rangeLevels2 = {1, 2}, .rangeLevels3 = {1, 2, 3}});
    sends(" 36:-1 40:-1 312:1 316:2 320:3", {.limits = {0, 1, 2, 3}});
    sends(" 36:-1 40:-1 324:1", {.passFlag = true});
    sends(" 36:-1 40:-1 145:1", {.auxFlag = true});
    sends(" 36:-1 40:-1 144:1", {.isReset = true});
}

TEST_F(SingleShotTest, ControlsOutOfRangeAreRefusedWhole) {
    const auto refused = [](Control value) {
        for (const int category : {0, 3}) {
            heard();
            value.category = category;
            control(value);
            hears("D: VELK::notifySingleShotControl:" + std::to_string(category) +
                  R"( | {notifySingleShotControl
                E: Not valid single shot control @notifySingleShotControl | } | = -1)");
        }
    };
    int accepted = 1;  // the default control of init
    const auto accepts = [&](const Control& value) { accepted += control(value) + 1; };
    refused({.percentLevel = -2});
    refused({.percentLevel = 101});
    for (Levels Control::*const levels : {&Control::uclampLevels, &Control::rangeLevels1,
                                          &Control::rangeLevels2, &Control::rangeLevels3}) {
        Control value;
        value.*levels = Levels(9, 1);
        refused(value);
        value.*levels = Levels(8, 1024);
        accepts(value);
        (value.*levels)[7] = 1025;
        refused(value);
        (value.*levels)[7] = 0xFFFFFFFF;
        refused(value);
    }
    refused({.criticalTaskUclamps = {{5, 1025}}});
    refused({.criticalTaskUclamps = {{5, 1}, {6, -1}}});
    accepts({.percentLevel = -1});
    accepts({.percentLevel = 0});
    accepts({.percentLevel = 100});
    accepts({.criticalTaskUclamps = {{-1, 1024}, {5, 0}}});
    EXPECT_EQ(9, accepted);
    sends(" 36:100 40:-1", {.percentLevel = 1});  // nothing of what was refused is active
    for (int i = 0; i < accepted + 1; ++i) {
        EXPECT_EQ(0, reset()) << "nor on the stack";
    }
    EXPECT_EQ(-1, reset());
    EXPECT_EQ(-1, control(3)) << "nor in the table";
    platform().singleShots[6][kScenario] = {.percentLevel = 101};
    heard();
    reset(6);
    hears(R"(D: VELK::notifyResetSingleShotControl:6 | {notifyResetSingleShotControl
        fetch single shots
        E: Not valid single shot control @notifyResetSingleShotControl | } | = -1)");
}

TEST_F(SingleShotTest, PercentLevelIsTheMaximumOfTheActive) {
    sends(" 36:-2 40:-1", {.percentLevel = 0});  // none active
    sends(" 36:30 40:-1", {.percentLevel = 30});
    sends(" 36:60 40:-1", {.percentLevel = 60});
    sends(" 36:60 40:-1", {.percentLevel = 1});
    sends(" 36:60 40:-1", {.percentLevel = 0});
    sends(" 36:-1 40:-1", Control{});
    for (const int left : {-1, 60, 60, 30, -2, -2}) {
        resets(" 36:" + std::to_string(left) + " 40:-1 144:1");
    }
    sends(" 36:1 40:-1", {.percentLevel = 1});
}

TEST_F(SingleShotTest, LimitIsTheMaximumOfTheActive) {
    const std::string head = " 36:-1 40:-1", tail = " 312:9 316:8 320:7";
    const std::pair<uint32_t, const char*> cases[] = {
            {5, " 308:5"}, {0, ""}, {0xFFFFFFFF, " 308:-1"}, {1, " 308:-1"}};
    for (const auto& [limit, sent] : cases) {
        sends(head + sent + tail, {.limits = {limit, 9, 8, 7}});
    }
    for (const char* left : {" 308:-1", " 308:5", "", " 308:999999"}) {
        resets(head + " 144:1" + left + tail);
    }
    sends(head + " 308:1" + tail, {.limits = {1, 9, 8, 7}});
}

TEST_F(SingleShotTest, UclampLevelsMergePerPositionAboveTheFloor) {
    sends(" 4:300 8:102 12:400 36:-1 40:-1", {.uclampLevels = {300, 0, 400}});
    sends(" 4:300 8:200 36:-1 40:-1", {.uclampLevels = {200, 200}});
    sends(" 4:300 8:200 12:400 16:104 20:105 24:106 28:107 32:1000 36:-1 40:-1",
          {.uclampLevels = {1, 1, 1, 1, 1, 1, 1, 1000}});
    sends(" 36:-1 40:-1", Control{});
    resets(" 36:-1 40:-1 144:1");
    resets(" 4:300 8:200 12:400 16:104 20:105 24:106 28:107 32:108 36:-1 40:-1 144:1");
    resets(" 4:300 8:102 36:-1 40:-1 144:1");
    resets(" 4:101 8:102 12:103 36:-1 40:-1 144:1");  // the floor alone
    control(Control{.uclampLevels = {1, 1}});
    hears("0.getClusterLevel(0) | 0.getClusterLevel(1)", kQuery);
}

TEST_F(SingleShotTest, ResetTakesEveryEqualValueAway) {
    for (const uint32_t value : {20U, 40U, 40U}) {
        control(Control{.uclampLevels = {value * 10},
                        .percentLevel = static_cast<int>(value),
                        .limits = {value}});
    }
    resets(" 4:200 36:20 40:-1 144:1 308:20");
    resets(" 4:200 36:20 40:-1 144:1 308:20");
    resets(" 4:101 36:-2 40:-1 144:1 308:999999");
}

TEST_F(SingleShotTest, SharedFlagStaysUntilTheLastHolderGoes) {
    sends(" 36:-1 40:-1 325:1", {.sharedFlag = true});
    sends(" 36:-1 40:-1 325:1", {.sharedFlag = true});
    sends(" 36:-1 40:-1", Control{});
    sends(" 36:-1 40:-1 144:1", {.isReset = true, .sharedFlag = true});
    resets(" 36:-1 40:-1 144:1");
    resets(" 36:-1 40:-1 144:1");
    resets(" 36:-1 40:-1 144:1");        // another holds it
    resets(" 36:-1 40:-1 144:1 325:1");  // the last one
    platform().singleShots[6][kScenario] = {.sharedFlag = true};
    resets(" 36:-1 40:-1 144:1", 6);              // below zero
    sends(" 36:-1 40:-1", {.sharedFlag = true});  // back at zero
    sends(" 36:-1 40:-1 325:1", {.sharedFlag = true});
}

TEST_F(SingleShotTest, HandedOverControlsGoNewestFirst) {
    for (const int request : {-3, -1, 0, 7}) {
        control(Control{.requestValue = request, .auxValue = 10 + request});
    }
    node().fail(35, EINVAL, 1);
    EXPECT_EQ(-1, control(Control{.percentLevel = 50, .auxValue = 9})) << "active all the same";
    sends(" 36:50 40:-1", {.percentLevel = 10});
    resets(" 36:50 40:-1 144:1");
    resets(" 36:-2 40:-1 44:9 144:1");
    resets(" 36:-1 40:-2 44:17 144:1");
    sends(" 36:-1 40:-2 44:10 144:1", [] { return reset(); });
    node().fail(35, EINVAL, 1);
    EXPECT_EQ(-1, reset()) << "withdrawn all the same";
    resets(" 36:-1 40:-2 44:7 144:1");
    resets(" 36:-1 40:-1 48:31 52:32 56:33 144:1");  // the default control of init
    heard();
    reset();
    hears("D: VELK::notifyResetSingleShotControl:0 | {notifyResetSingleShotControl | } | = -1");
}

TEST_F(SingleShotTest, CriticalTasksMergeAboveTheirDefault) {
    for (const int task : {5, 20, 22}) {
        start(1, task);
    }
    const std::string head = " 36:-1 40:-1";
    sends(head + " 148:1 228:900", {.criticalTaskUclamps = {{5, 900}}});
    sends(head + " 148:1 152:2 156:3 228:900 232:320 236:400",
          {.criticalTaskUclamps = {{22, 1}, {20, 2}, {5, 3}}});
    // Of equal keys only the one that a search finds takes the maximum.
    sends(head + " 148:1 152:1 228:900 232:400", {.criticalTaskUclamps = {{5, 300}, {5, 400}}});
    resets(head + " 144:1 148:1 152:1 228:900 232:400");
    resets(head + " 144:1 148:1 152:2 156:3 228:900 232:320 236:400");
    resets(head + " 144:1 148:1 228:200");  // the default uclamp
    platform().sources[0].tasks[20].targetTime = -2;
    platform().sources[1].tasks[22].targetTime = -1;
    sends(head + " 148:2 152:3 228:7 232:400", {.criticalTaskUclamps = {{20, 7}, {22, 8}}});
    sends(head + " 148:2 228:6", {.criticalTaskUclamps = {{20, 6}}});  // unknown: as asked
    platform().sources[1].tasks[22].targetTime = -2;
    sends(head + " 148:3 228:5", {.criticalTaskUclamps = {{22, 5}}});
}

TEST_F(SingleShotTest, CriticalTasksAskTheSourceOfTheirEnum) {
    const auto asks = [](int task, const char* queries) {
        heard();
        control(Control{.criticalTaskUclamps = {{task, 1}}});
        hears(queries, kQuery);
    };
    asks(20, "0.getTaskTargetTime(20) | 0.getTaskDefaultUclamp(20)");
    asks(21, "");
    asks(22, "1.getTaskTargetTime(22) | 1.getTaskDefaultUclamp(22)");
    asks(-8, "0.getTaskTargetTime(-8)");
    uninit();
    platform().sources[1].isMissing = true;
    up();
    asks(22, "");
}

TEST_F(SingleShotTest, AtMostTwentyCriticalTaskIds) {
    const Control critical = {.criticalTaskUclamps = {{5, 300}, {6, 400}}};
    const auto refused = [&] {
        heard();
        control(critical);
        hears(R"(D: VELK::notifySingleShotControl:0 | {notifySingleShotControl
            E: invalid critical task ids or uclamps size @setSingleShotParam
            ioctl 35 0:tid 36:-1 40:-1 328:-1 332:-1 336:-1 | } | = 0)");
    };
    refused();
    std::string ids = " 148:20", uclamps = " 228:300";
    for (unsigned key = 1; key <= 19; ++key) {
        start(key, 6);
        ids += ' ' + std::to_string(148 + 4 * key) + ':' + std::to_string(key);
        uclamps += ' ' + std::to_string(228 + 4 * key) + ":400";
    }
    start(1, 5);
    sends(" 36:-1 40:-1" + ids + uclamps, critical);
    start(1, 6);
    refused();
}

// A category stands for what the settings give for it, else for the first control handed over.
TEST_F(SingleShotTest, SettingsDecideWhatACategoryIs) {
    const auto aux = [](int value) { return Control{.category = 77, .auxValue = value}; };
    auto& table = platform().singleShots;
    table[1] = {{kScenario, aux(11)}, {VELK_SCENARIO_FALLBACK, aux(18)}};
    table[2] = {{VELK_SCENARIO_FALLBACK, aux(28)}, {VELKScenario{4}, aux(24)}};
    table[3] = {{VELKScenario{4}, aux(34)}};
    table[4] = {};
    table[0] = {{kScenario, aux(50)}};
    const auto stands = [](int category, const std::string& value) {
        heard();
        const std::string number = std::to_string(category);
        const std::string missing = "E: Single shot setting of " + number + " not found @";
        const std::string record = "fetch single shots | ioctl 35 0:tid 36:-1 40:-1 44:" + value;
        control(category);
        hears(value.empty() ? "fetch single shots | " + missing + "notifySingleShotControl | = -1"
                            : "fetch single shots | D: VELK::notifySingleShotControl:" + number +
                                      " | {notifySingleShotControl | " + record +
                                      " 328:-1 332:-1 336:-1 | } | = 0");
        reset(category);
        hears("D: VELK::notifyResetSingleShotControl:" + number +
              " | {notifyResetSingleShotControl | " +
              (value.empty() ? "fetch single shots | " + missing + "notifyResetSingleShotControl"
                             : record + " 144:1 328:-1 332:-1 336:-1") +
              " | } | = " + (value.empty() ? "-1" : "0"));
    };
    stands(1, "11");  // the current scenario
    stands(2, "28");  // the fallback
    stands(3, "");
    stands(4, "");
    stands(5, "");
    for (const int category : {1, 3, 4, 5, 5, -6}) {
        control(Control{.category = category, .auxValue = 90 + category});
    }
    control(Control{.category = 5, .auxValue = 20});
    EXPECT_EQ(expected(R"(D: add default control with category(5) to table(size=1)
                          D: add default control with category(-6) to table(size=2))"),
              heardLines("D: add"));
    stands(1, "11");
    stands(3, "");  // the settings alone decide on a category that they know
    stands(4, "");
    stands(5, "95");  // the first control handed over
    stands(-6, "84");
    table[5] = {{kScenario, aux(55)}};
    stands(5, "55");  // the settings are fetched anew each time
    sends(" 36:-1 40:-1 44:50", [] { return control(0); });
    resets(" 36:-1 40:-1 44:50 144:1");  // handed over, as far as the stack is concerned
}

}  // namespace
}  // namespace fake
