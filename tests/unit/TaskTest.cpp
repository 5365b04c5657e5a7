// Task start, end and scene change as camera threads call them.
#include <cerrno>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using TaskTest = LibraryTest;

TEST_F(TaskTest, LifeOfAPair) {
    up();
    start(1, 5, {.groupHead = 3, .extraFlag0 = 8, .extraFlag1 = 9});
    hears(R"({notifyTaskStart | D: [notifyTaskStart] notifyTaskStart
        D: [notifyTaskStart] isFirstShowUp: 1, uniqueId: 1
        I: new task: 5 (1) taskTargetTime: 16, isVIPTask: 1
        I: curTask uniqueId: 1 (task enum: 5 => SCALE), group head uniqueId: 0
        ioctl 28 0:1 8:200 12:16 16:50 24:1 25:8 26:9 27:SCALE | ioctl 29 0:tid 4:1
        D: check mTaskState(5) size: 0 | } | = 0)");
    sceneChange(5, 9);
    hears(R"({notifyTaskSceneChange | I: [notifyTaskSceneChange] notifyTaskSceneChange, taskId: 1
        ioctl 31 0:tid 4:1 12:9 | } | = 0)");
    end(1, 5);
    hears(R"({notifyTaskEnd | D: [notifyTaskEnd] notifyTaskEnd | ioctl 30 0:tid 4:1
        D: check mTaskState(5) size: 1 | } | = 0)");
    sceneChange(5, 9);
    hears(R"({notifyTaskSceneChange | I: [notifyTaskSceneChange] notifyTaskSceneChange, taskId: 0
        E: error taskid, need to check @notifyTaskSceneChange | } | = -1)");
    start(1, 5);
    hears(R"({notifyTaskStart | D: [notifyTaskStart] notifyTaskStart
        D: [notifyTaskStart] isFirstShowUp: 0, uniqueId: 1 | ioctl 29 0:tid 4:1
        D: check mTaskState(5) size: 1 | } | = 0)");
    start(2, 5);
    sceneChange(5, -1);
    hears(R"(ioctl 28 0:2 8:200 12:16 16:50 24:1 27:SCALE | ioctl 29 0:tid 4:2
        ioctl 31 0:tid 4:1 12:-1)",
          kNode);
}

TEST_F(TaskTest, RegistrationFollowsTheTuningData) {
    const struct {
        int task;
        TaskFigures figures;
        std::string words, name;
        int shownTime;
    } cases[] = {{5, {1, 1, 0, false, ""}, "8:1 12:5", "", 5},
                 {5, {4, 1024, -1, true, "A"}, "8:1024 12:5 16:-1 24:1", "A", 5},
                 {5, {5, 7, 8, false, "TASK_"}, "8:7 12:5 16:8", "", 5},
                 {5, {6, 7, 8, false, "MY_TASK_X"}, "8:7 12:6 16:8", "MY_X", 6},
                 {-1, {9, 7, 8, false, "TASK_TASK_Y"}, "8:7 12:9 16:8", "TASK_Y", 9},
                 {20, {9, 7, 8, false, "TASK_CUSTOM_ABCDEFGHIJK"}, "8:7 12:9 16:8", "ABCDEFGHI", 9},
                 {22, {9, 7, 8, true, "CUSTOM_TASK_Z"}, "8:7 12:9 16:8 24:1", "Z", 9},
                 {22, {9, 7, 8, false, "CUSTASK_TOM_Z"}, "8:7 12:9 16:8", "Z", 9},
                 {22, {9, 7, 8, false, "TASCUSTOM_K_Z"}, "8:7 12:9 16:8", "TASK_Z", 9},
                 {22, {9, 7, 8, false, "CUSTOM_CUSTOM_"}, "8:7 12:9 16:8", "CUSTOM_", 9},
                 {99, {3, 7, 8, false, "ABCDEFGHI"}, "8:7 12:5 16:8", "ABCDEFGHI", 5}};
    for (const auto& c : cases) {
        node().reset();
        const size_t source = c.task > 21 ? 1 : 0;
        platform().sources.at(source).tasks[c.task] = c.figures;
        platform().sources.at(1 - source).tasks.erase(c.task);
        up();
        start(1, c.task);
        const std::string task = std::to_string(c.task), transcript = heard();
        EXPECT_NE(std::string::npos,
                  transcript.find("I: new task: " + task +
                                  " (1) taskTargetTime: " + std::to_string(c.shownTime) +
                                  ", isVIPTask: " + (c.figures.isVip ? "1" : "0") +
                                  "\nI: curTask uniqueId: 1 (task enum: " + task + " => " + c.name +
                                  "), group head uniqueId: 0\nioctl 28 0:1 " + c.words +
                                  " 27:" + c.name + "\nioctl 29"))
                << transcript;
        uninit();
        heard();
    }
}

TEST_F(TaskTest, InvalidTasksGetNoId) {
    auto& own = platform().sources[0].tasks;
    own[1] = {0, 100};
    own[2] = {100, 0};
    own[3] = {3, -1};
    own[4] = {-5, 1024};
    own[7] = {1, 1};
    platform().sources[1].isMissing = true;
    up();
    const std::tuple<int, const char*, bool> cases[] = {
            {1, "0, defaultuclamp: 100", true},  {2, "100, defaultuclamp: 0", true},
            {3, "5, defaultuclamp: -1", true},   {4, "-5, defaultuclamp: 1024", true},
            {21, "-1, defaultuclamp: 0", false}, {22, "-1, defaultuclamp: 0", false}};
    for (const auto& [number, figures, isAsked] : cases) {
        const std::string task = std::to_string(number);
        const std::string validity =
                (isAsked ? "0.getTaskTargetTime(" + task + ") | 0.getTaskDefaultUclamp(" + task +
                                   ") | "
                         : "") +
                "D: task: " + task + " invalid, target time: " + figures + " | D: Task: " + task;
        start(1, number);
        hears(validity + " is invalid | = -1", kUsual | kQuery | kTags);
        end(1, number);
        hears(validity + " is not valid | = -1", kUsual | kQuery | kTags);
    }
    start(1, 7);
    hears("ioctl 28 0:1 8:1 12:5 16:-1 27: | ioctl 29 0:tid 4:1", kNode);
}

TEST_F(TaskTest, EndBeforeStartSpendsAnId) {
    up();
    end(1, 5);
    hears(R"({notifyTaskEnd | D: [notifyTaskEnd] notifyTaskEnd
        W: notifyTaskEnd should not called before notifyTaskStart,curTask: 5 | } | = -1)");
    EXPECT_EQ(-1, end(1, 5)) << "still unknown";
    start(1, 5);
    hears("ioctl 28 0:3 8:200 12:16 16:50 24:1 27:SCALE | ioctl 29 0:tid 4:3", kNode);
}

TEST_F(TaskTest, RefusedRegistrationIsOwedUntilTheDriverTakesIt) {
    up();
    node().fail(28, EINVAL, 3);
    start(1, 5, {.extraFlag1 = 7});
    hears(R"({notifyTaskStart | D: [notifyTaskStart] notifyTaskStart
        D: [notifyTaskStart] isFirstShowUp: 1, uniqueId: 1
        I: new task: 5 (1) taskTargetTime: 16, isVIPTask: 1
        I: curTask uniqueId: 1 (task enum: 5 => SCALE), group head uniqueId: 0
        ioctl 28 0:1 8:200 12:16 16:50 24:1 26:7 27:SCALE = -1
        D: [sendIOCtl] ioctlRet:-1, errno: Invalid argument
        ioctl 28 0:1 8:200 12:16 16:50 24:1 26:7 27:SCALE = -1
        D: [sendIOCtl] ioctlRet:-1, errno: Invalid argument
        ioctl 29 0:tid 4:1 | D: check mTaskState(5) size: 0 | } | = 0)");
    end(1, 5);
    heard();
    for (int i = 0; i < 3; ++i) {
        start(1, 5, {.extraFlag1 = 8});
    }
    hears(R"(ioctl 28 0:1 8:200 12:16 16:50 24:1 26:7 27:SCALE = -1 | ioctl 29 0:tid 4:1
        ioctl 28 0:1 8:200 12:16 16:50 24:1 26:7 27:SCALE | ioctl 29 0:tid 4:1
        ioctl 29 0:tid 4:1)",
          kNode);
    node().fail(28, 0, 1, 4);
    start(2, 5);
    start(2, 5);
    hears(R"(ioctl 28 0:2 8:200 12:16 16:50 24:1 27:SCALE = 4
        ioctl 28 0:2 8:200 12:16 16:50 24:1 27:SCALE | ioctl 29 0:tid 4:2 | ioctl 29 0:tid 4:2)",
          kNode);
    node().fail(28, EIO);
    for (uintptr_t key = 10; key < 17; ++key) {
        start(key, 6);
    }
    EXPECT_EQ(expected(R"(W: too many Error, error number: 6
                          W: too many Error, error number: 7)"),
              heardLines("W: "));
}

TEST_F(TaskTest, RefusedStartAndEndStillMoveTheSlot) {
    up();
    node().fail(29, EIO, 1);
    EXPECT_EQ(-1, start(1, 5));
    EXPECT_EQ(0, sceneChange(5, 0)) << "recorded as running";
    node().fail(30, EIO, 1);
    EXPECT_EQ(-1, end(1, 5));
    heard();
    EXPECT_EQ(-1, sceneChange(5, 0)) << "recorded as ended";
    hears("", kNode);
}

TEST_F(TaskTest, TwoThreadsOnOnePair) {
    up();
    start(1, 5);
    std::thread([] {
        sceneChange(5, 1);  // this thread has not started it
        start(1, 5);
        sceneChange(5, 2);
    }).join();
    sceneChange(5, 3);
    std::thread([] { end(1, 5); }).join();
    sceneChange(5, 4);  // the end was for every thread of the id
    hears(R"(ioctl 28 0:1 8:200 12:16 16:50 24:1 27:SCALE | ioctl 29 0:tid 4:1 | = 0
        T2 = -1 | T2 ioctl 29 0:tid 4:1 | T2 = 0 | T2 ioctl 31 0:tid 4:1 12:2 | T2 = 0
        ioctl 31 0:tid 4:1 12:3 | = 0 | T3 ioctl 30 0:tid 4:1 | T3 = 0 | = -1)",
          kNode | kResult);
}

}  // namespace
}  // namespace fake
