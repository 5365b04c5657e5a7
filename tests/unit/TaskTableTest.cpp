// The table of unique task ids, thread slots and group heads, the error list, and the dump file.
#include <cerrno>
#include <cstring>

#include "resource/ErrorHandle.h"
#include "resource/VELKRescManagement.h"
#include "support/LibraryTest.h"

namespace fake {
namespace {

using Ids = std::vector<unsigned>;

class TaskTableTest : public LibraryTest {
  protected:
    TaskTableTest() {
        call([&] { return manager = VELKRescManagement::createInstance(kParams), 0; });
        takeTranscript();
    }
    void TearDown() override {
        manager.reset();
        LibraryTest::TearDown();
    }

    // The pair's id, negative when the pair is new.
    int id(uintptr_t key, int task) const {
        return call([&] {
            bool isNew = false;
            const auto value = static_cast<int>(manager->getUniqueTaskId(keyOf(key), task, isNew));
            return isNew ? -value : value;
        });
    }
    void update(int task, int uniqueTaskId, unsigned tid, bool isStart) const {
        call([&] { return manager->updateTaskState(task, uniqueTaskId, tid, isStart), 0; });
    }
    Ids idsOf(int task, Ids before = {}) const {
        manager->getUniqueTaskIdsFromTask(task, before);
        return before;
    }

    std::unique_ptr<VELKRescManagement> manager;
};

TEST_F(TaskTableTest, IdsAreHandedOutInOrderAndNeverTwice) {
    EXPECT_EQ(-1, id(1, 5));
    EXPECT_EQ(-2, id(1, 6));
    EXPECT_EQ(-3, id(2, 5));
    EXPECT_EQ(1, id(1, 5));
    EXPECT_EQ(3, id(2, 5));
    bool isNew = true;
    EXPECT_EQ(2U, manager->getUniqueTaskId(keyOf(1), 6, isNew));
    EXPECT_TRUE(isNew) << "a known pair leaves the flag alone";
    manager->removeUniqueTaskId(keyOf(1), 5);
    manager->removeUniqueTaskId(keyOf(1), 7);
    manager->removeUniqueTaskId(keyOf(9), 5);
    EXPECT_EQ(2, id(1, 6)) << "the other pair of the key stays";
    EXPECT_EQ(-4, id(1, 5));
    EXPECT_EQ(5U, manager->getUniqueTaskId(keyOf(3), 5));
    EXPECT_EQ(5U, manager->getUniqueTaskId(keyOf(3), 5));
    EXPECT_EQ(-6, id(~uintptr_t{0}, 5));
    EXPECT_EQ(6, id(~uintptr_t{0}, 5));
    expectTranscript("", kUsual & ~kResult);
}

TEST_F(TaskTableTest, EndedSlotsAreReusedFromTheFront) {
    update(5, 3, 100, false);
    EXPECT_EQ(Ids(), idsOf(5)) << "the end of a task that never started";
    update(5, 3, 100, true);
    update(5, 4, 200, true);
    update(6, 9, 100, true);
    update(5, 3, 999, false);
    EXPECT_EQ(Ids({3, 4}), idsOf(5)) << "active or not";
    EXPECT_EQ(0U, manager->findTaskIdFromTid(5, 100));
    EXPECT_EQ(9U, manager->findTaskIdFromTid(6, 100)) << "another task is left alone";
    update(5, 6, 300, true);
    EXPECT_EQ(Ids({77, 6, 4}), idsOf(5, {77}));
    EXPECT_EQ(6U, manager->findTaskIdFromTid(5, 300));
    EXPECT_EQ(4U, manager->findTaskIdFromTid(5, 200));
    EXPECT_EQ(0U, manager->findTaskIdFromTid(5, 100));
    EXPECT_EQ(0U, manager->findTaskIdFromTid(8, 200));
    update(5, 4, 200, true);
    update(5, 8, 200, true);
    EXPECT_EQ(Ids({6, 4, 4, 8}), idsOf(5)) << "a repeated start takes a slot of its own";
    EXPECT_EQ(4U, manager->findTaskIdFromTid(5, 200)) << "the first";
    update(5, 4, 1, false);
    EXPECT_EQ(8U, manager->findTaskIdFromTid(5, 200)) << "an end is for all slots of the id";
    expectTranscript(R"(D: check mTaskState(5) size: 0 | D: check mTaskState(5) size: 0
        D: check mTaskState(5) size: 1 | D: check mTaskState(6) size: 1
        D: check mTaskState(5) size: 2 | D: check mTaskState(5) size: 2
        D: check mTaskState(5) size: 2 | D: check mTaskState(5) size: 2
        D: check mTaskState(5) size: 2)",
                     kLog);
}

TEST_F(TaskTableTest, GroupHeadsAreFoundThroughTheTuningData) {
    platform().sources[0].tasks[-7].groupHead = 9;
    platform().sources[0].tasks[20].groupHead = 8;
    const struct {
        int task, group;
        unsigned id;
    } heads[] = {{6, 0, 11},  {6, 1, 12}, {6, 1, 13}, {6, -1, 14},
                 {23, 1, 15}, {9, 4, 16}, {0, 1, 17}};
    for (const auto& head : heads) {
        manager->recordGroupHead(head.task, head.id, {.groupHead = head.group});
    }
    const std::pair<int, int> lookups[] = {{5, -1}, {0, 1}, {5, 0}, {5, 1},  {22, 1},
                                           {-7, 4}, {5, 2}, {6, 1}, {21, 1}, {20, 1}};
    for (const auto& [task, group] : lookups) {
        call([task = task, group = group, this] {
            return static_cast<int>(manager->lookupGroupHead(task, {.groupHead = group}));
        });
    }
    expectTranscript(
            R"(= -1 | = -1 | 0.getGroupHeadTask(5, 0) | = 11 | 0.getGroupHeadTask(5, 1) | = 13
        1.getGroupHeadTask(22, 1) | = 15 | 0.getGroupHeadTask(-7, 4) | = 16
        0.getGroupHeadTask(5, 2) | D: GroupHead 6 is not recorded | = -1
        0.getGroupHeadTask(6, 1) | D: GroupHead 0 is not recorded | = -1
        D: GroupHead 0 is not recorded | = -1
        0.getGroupHeadTask(20, 1) | D: GroupHead 8 is not recorded | = -1)",
            kUsual | kQuery);
}

TEST_F(TaskTableTest, DumpIsRewrittenForEveryNewPair) {
    id(1, 5);
    platform().set(kDumpTaskTable, 1);
    id(1, 24);
    id(1, 24);
    expectTranscript(R"(property vendor.debug.velk.dumptasktable.enable | = -1
        property vendor.debug.velk.dumptasktable.enable
        I: remember to apply "adb shell setenforce 0" before dump
        I: save to /data/vendor/camera_dump/velk_task
        open /data/vendor/camera_dump/velk_task rewrite 448 = 101
        write 101 61 = 61 | UniqueTaskId => VELKMonitorTask | 2 => TASK_CUSTOM_ABCDEFGHIJK
        close 101 | = -2 | = 2)",
                     kUsual | kProperty);
    platform().sources[0].tasks[24].name = "FROM_OWN";
    node().fail(kWrite, 0, 1, 5);
    node().handOut(0);
    id(1, 40);
    const std::string dump = takeTranscript(kNode | kQuery);
    for (const char* part : {"0.getTaskName(24)\n", "0.getTaskName(40)\n1.getTaskName(40)\n",
                             "\n2 => FROM_OWN\n", "\n3 => \n", " = 5\n", "close 0\n"}) {
        EXPECT_NE(std::string::npos, dump.find(part)) << part << dump;
    }
    EXPECT_EQ(std::string::npos, dump.find("1.getTaskName(24)")) << "asked only when needed";
    call([this] { return manager->dumpTaskTable(), 0; });
    EXPECT_NE(std::string::npos, takeTranscript(kNode).find("\n3 => \n")) << "on request";
}

TEST_F(TaskTableTest, FailuresOfTheDumpDoNotFailTheCall) {
    platform().set(kDumpTaskTable, 1);
    for (const int error : {ENOENT, EACCES, EMFILE, EINTR}) {
        node().fail(kOpenDump, error, 1);
        id(static_cast<uintptr_t>(error), 5);
        EXPECT_EQ("E: fail to open /data/vendor/camera_dump/velk_task: " +
                          std::string(strerror(error)) + " @dumpTaskTable\n",
                  takeLines("E: "));
    }
    node().fail(kWrite, ENOSPC);
    node().fail(kClose, EIO);
    EXPECT_EQ(-5, id(100, 5));
    EXPECT_EQ("", takeLines("E: "));
}

// The template is for any key and value; the library uses it for refused registrations.
TEST_F(TaskTableTest, ErrorListKeepsTheFirstRefusedValue) {
    ErrorHandle<int, std::string> list;
    std::string value = "untouched";
    EXPECT_FALSE(list.isInErrorList(1));
    EXPECT_FALSE(list.getResidual(1, value));
    list.removeFromErrorList(1);
    list.addToErrorList(1, "first");
    list.addToErrorList(1, "second");
    EXPECT_TRUE(list.isInErrorList(1));
    EXPECT_FALSE(list.isInErrorList(2));
    EXPECT_FALSE(list.getResidual(2, value));
    EXPECT_EQ("untouched", value);
    EXPECT_TRUE(list.getResidual(1, value));
    EXPECT_EQ("first", value);
    list.removeFromErrorList(2);
    for (const int key : {2, 3, 4, 5}) {
        list.addToErrorList(key, "more");
    }
    expectTranscript("");
    for (const int key : {6, 6, 7}) {
        list.addToErrorList(key, "last");
    }
    list.removeFromErrorList(1);
    list.removeFromErrorList(2);
    list.addToErrorList(3, "known");
    expectTranscript(R"(W: too many Error, error number: 6 | W: too many Error, error number: 6
        W: too many Error, error number: 7)");
    EXPECT_TRUE(list.isInErrorList(7));
    EXPECT_FALSE(list.isInErrorList(1));
}

}  // namespace
}  // namespace fake
