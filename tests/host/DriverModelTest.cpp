#include "driver/DriverModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "DriverScript.h"
#include "clock/DeskClock.h"

namespace desk {
namespace {

// A 32-bit word of an otherwise valid record is overwritten.
struct ContentCase {
    uint32_t request;
    size_t offset;
    uint32_t word;
    const char* fault;  // empty: accepted
};

std::vector<uint32_t> validRecord(uint32_t request) {
    const auto words = [](const auto& record) {
        std::vector<uint32_t> copy(sizeof record / sizeof(uint32_t));
        std::memcpy(copy.data(), &record, sizeof record);
        return copy;
    };
    switch (request) {
        case VELK_IOC_INIT:
            return words(initRecord());
        case VELK_IOC_TASK_INIT:
            return words(taskInitRecord(1));
        case VELK_IOC_UNINIT:
        case VELK_IOC_VSYNC:
        case VELK_IOC_CAM_FPS:
            return {0, 0};
        case VELK_IOC_SINGLE_SHOT:
            return words(singleShotRecord(kTid));
        case VELK_IOC_CRITICAL_START:
            return words(VELK_CRITICAL_TASK_PARAM{kTid, 1024});
        case VELK_IOC_CRITICAL_END:
            return words(VELK_CRITICAL_TASK_PARAM{kTid, 0});
        case VELK_IOC_ANCHOR:
            return words(VELK_ANCHOR_PARAM{1, 0, VELK_ANCHOR_END, 0, 5, 0, 3});
        default:
            return words(VELK_TASK_PARAM{kTid, 1, 0, 0});
    }
}

constexpr uint32_t kMinusOne = 0xFFFFFFFF;
constexpr uint32_t kMinusTwo = 0xFFFFFFFE;
constexpr ContentCase kContentCases[] = {
        {VELK_IOC_INIT, 4, 1024, ""},
        {VELK_IOC_INIT, 12, 1025, "clusterLevels[2] is 1025, expected 0..1024"},
        {VELK_IOC_INIT, 24, kMinusOne, ""},
        {VELK_IOC_INIT, 28, 0, "tuningParam1 is 0, expected 1 or more"},
        {VELK_IOC_INIT, 32, kMinusOne, "tuningParam2 is -1, expected 1 or more"},
        {VELK_IOC_TASK_INIT, 0, 0, "uniqueTaskId is 0, expected 1 or more"},
        {VELK_IOC_TASK_INIT, 4, 1, "reserved4 is 1, expected 0"},
        {VELK_IOC_TASK_INIT, 8, 0, "defaultUclamp is 0, expected 1..1024"},
        {VELK_IOC_TASK_INIT, 8, 1024, ""},
        {VELK_IOC_TASK_INIT, 8, 1025, "defaultUclamp is 1025, expected 1..1024"},
        {VELK_IOC_TASK_INIT, 12, 4, "targetTime is 4, expected 5 or more"},
        {VELK_IOC_TASK_INIT, 12, 5, ""},
        {VELK_IOC_TASK_INIT, 20, 1, "reserved20 is 1, expected 0"},
        {VELK_IOC_TASK_INIT, 24, 0x00000002, "isVIPTask is 2, expected 0 or 1"},
        {VELK_IOC_TASK_INIT, 32, 0x78000000, "taskName has bytes behind its end, expected zeros"},
        {VELK_IOC_TASK_INIT, 36, 0x00000100, "reserved37[0] is 1, expected 0"},
        {VELK_IOC_TASK_START, 0, kTid + 1, "tid is 11, expected the caller's, 10"},
        {VELK_IOC_TASK_START, 4, 0, "uniqueTaskId is 0, expected 1 or more"},
        {VELK_IOC_TASK_START, 4, 2, "start of a task that was never registered"},
        {VELK_IOC_TASK_START, 8, 1, "reserved8 is 1, expected 0"},
        {VELK_IOC_TASK_START, 12, 1, "sceneChangeMode is 1, expected 0"},
        {VELK_IOC_TASK_END, 0, 0, "tid is 0, expected 1 or more"},
        {VELK_IOC_TASK_END, 4, 2, "end of a task that was never registered"},
        {VELK_IOC_TASK_END, 12, 1, "sceneChangeMode is 1, expected 0"},
        {VELK_IOC_SCENE_CHANGE, 0, kTid + 1, "tid is 11, expected the caller's, 10"},
        {VELK_IOC_SCENE_CHANGE, 4, 0, "uniqueTaskId is 0, expected 1 or more"},
        {VELK_IOC_SCENE_CHANGE, 4, 2, "scene change of a task that was never registered"},
        {VELK_IOC_SCENE_CHANGE, 8, 1, "reserved8 is 1, expected 0"},
        {VELK_IOC_SCENE_CHANGE, 12, kMinusOne, ""},
        {VELK_IOC_UNINIT, 0, 1, "reserved0 is 1, expected 0"},
        {VELK_IOC_VSYNC, 0, 1, "reserved0 is 1, expected 0"},
        {VELK_IOC_VSYNC, 4, 1, "reserved4 is 1, expected 0"},
        {VELK_IOC_CAM_FPS, 0, 1, "reserved0 is 1, expected 0"},
        {VELK_IOC_CAM_FPS, 4, kMinusOne, ""},
        {VELK_IOC_SINGLE_SHOT, 0, kTid + 1, "tid is 11, expected the caller's, 10"},
        {VELK_IOC_SINGLE_SHOT, 32, 1025, "uclampLevels[7] is 1025, expected 0..1024"},
        {VELK_IOC_SINGLE_SHOT, 36, kMinusTwo, ""},
        {VELK_IOC_SINGLE_SHOT, 36, kMinusTwo - 1, "percentLevel is -3, expected -2..100"},
        {VELK_IOC_SINGLE_SHOT, 36, 100, ""},
        {VELK_IOC_SINGLE_SHOT, 36, 101, "percentLevel is 101, expected -2..100"},
        {VELK_IOC_SINGLE_SHOT, 48, 1025, "rangeLevels1[0] is 1025, expected 0..1024"},
        {VELK_IOC_SINGLE_SHOT, 80, 1025, "rangeLevels2[0] is 1025, expected 0..1024"},
        {VELK_IOC_SINGLE_SHOT, 140, 1025, "rangeLevels3[7] is 1025, expected 0..1024"},
        {VELK_IOC_SINGLE_SHOT, 144, 0x00000101, ""},
        {VELK_IOC_SINGLE_SHOT, 144, 0x00000002, "isReset is 2, expected 0 or 1"},
        {VELK_IOC_SINGLE_SHOT, 144, 0x00000200, "auxFlag is 2, expected 0 or 1"},
        {VELK_IOC_SINGLE_SHOT, 144, 0x00010000, "reserved146[0] is 1, expected 0"},
        {VELK_IOC_SINGLE_SHOT, 148, 1, ""},
        {VELK_IOC_SINGLE_SHOT, 152, 1,
         "criticalTaskIds[1] is 1, expected 0 behind the free place 0"},
        {VELK_IOC_SINGLE_SHOT, 228, 1, "criticalTaskUclamps[0] is 1, expected 0 in a free place"},
        {VELK_IOC_SINGLE_SHOT, 304, 1, "criticalTaskUclamps[19] is 1, expected 0 in a free place"},
        {VELK_IOC_SINGLE_SHOT, 304, 1025, "criticalTaskUclamps[19] is 1025, expected 0..1024"},
        {VELK_IOC_SINGLE_SHOT, 324, 0x00000200, "sharedFlag is 2, expected 0 or 1"},
        {VELK_IOC_SINGLE_SHOT, 324, 0x00000002, "passFlag is 2, expected 0 or 1"},
        {VELK_IOC_SINGLE_SHOT, 324, 0x01000000, "reserved326[1] is 1, expected 0"},
        {VELK_IOC_CRITICAL_START, 0, kTid + 1, "tid is 11, expected the caller's, 10"},
        {VELK_IOC_CRITICAL_START, 4, 0, "criticalValue is 0, expected 1..1024"},
        {VELK_IOC_CRITICAL_START, 4, 1025, "criticalValue is 1025, expected 1..1024"},
        {VELK_IOC_CRITICAL_END, 0, kMinusOne, "tid is -1, expected 1 or more"},
        {VELK_IOC_CRITICAL_END, 4, 1, "criticalValue is 1, expected 0"},
        {VELK_IOC_ANCHOR, 4, 1, "reserved4 is 1, expected 0"},
        {VELK_IOC_ANCHOR, 8, 0, "phase is 0, expected 1 or 2"},
        {VELK_IOC_ANCHOR, 8, 3, "phase is 3, expected 1 or 2"},
        {VELK_IOC_ANCHOR, 8, VELK_ANCHOR_START, ""},
        {VELK_IOC_ANCHOR, 12, 1, "reserved12 is 1, expected 0"},
        {VELK_IOC_ANCHOR, 16, kMinusOne, ""},
        {VELK_IOC_ANCHOR, 20, 1, "latencyTarget is 1, expected 0 in an end"},
};

TEST(DriverModelContent, IsJudgedFieldByField) {
    for (const ContentCase& c : kContentCases) {
        SCOPED_TRACE(fmt::format("{:#x} offset {} word {:#x}", c.request, c.offset, c.word));
        ScriptedDriver driver;
        const bool isRegistration = c.request == VELK_IOC_TASK_INIT || c.request == VELK_IOC_INIT;
        driver.play(isRegistration ? "init" : "init, reg 1, start 1, open-span");
        std::vector<uint32_t> record = validRecord(c.request);
        record[c.offset / sizeof(uint32_t)] = c.word;

        const int reply = driver.model.command(kNode, c.request, record.data(), kTid);
        EXPECT_EQ(reply, *c.fault == '\0' ? 0 : -EINVAL);
        const DriverEvent& event = driver.recorder->events.back();
        EXPECT_EQ(event.verdict == Verdict::Refused ? event.finding : "", c.fault);
    }
}

TEST(DriverModelContent, FindsANameWithoutAnEnd) {
    ScriptedDriver driver;
    driver.play("init");
    VELK_TASK_INIT_PARAM record = taskInitRecord(1);
    std::fill(std::begin(record.taskName), std::end(record.taskName), 'x');
    EXPECT_EQ(driver.send(VELK_IOC_TASK_INIT, record), -EINVAL);
    EXPECT_EQ(driver.recorder->events.back().finding,
              "taskName has 10 characters, expected up to 9 characters");
    record.taskName[9] = '\0';
    EXPECT_EQ(driver.send(VELK_IOC_TASK_INIT, record), 0);
}

struct HistoryCase {
    const char* faults;
    const char* script;
    const char* verdicts;
};

constexpr HistoryCase kHistoryCases[] = {
        {"",
         "control, init, reg 1, start 1, scene 1, end 1, start 1, end 1, open-span, close-span, "
         "anchor 5, vsync, fps 30, control 1, uninit, control, init, reg 1, start 1",
         "ok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\nok\n"},
        {"  ", "vsync, init, uninit, anchor 5, start 1",
         "note: a command before init or after uninit\nok\nok\n"
         "note: a command before init or after uninit\n"
         "fault: start of a task that was never registered\n"},
        {"", "init, init, reg 1, reg 1, anchor 0",
         "ok\nnote: init without an uninit since the last one\nok\n"
         "note: the task is registered already\nnote: the anchor starts without a target\n"},
        {"", "init, reg 1, start 1 @1, start 1 @2, end 1 @1, end 1 @2, end 1 @1",
         "ok\nok\nok\nok\nok\nok\nnote: end of a task that does not run\n"},
        {"", "init, reg 1, start 1 @1, start 1 @2, end 1 @3, scene 1 @1",
         "ok\nok\nok\nok\nnote: end of a task that only other threads run\n"
         "note: scene change of a task that the thread does not run\n"},
        {"", "init, reg 1, start 1, start 1, end 1",
         "ok\nok\nok\nnote: the thread runs the task already\nok\n"},
        {"", "init, open-span @1, open-span @2, open-span @1, close-span @1, close-span @1",
         "ok\nok\nok\nnote: a critical span starts within another of its thread\nok\n"
         "note: end of a critical span that is not open\n"},
        {"", "init, control 3", "ok\nnote: the control names a task that was never registered\n"},
        // The consequences of an injected refusal are not noted.
        {"taskInit=EIO*2", "init, reg 1, start 1, reg 1, start 1 @2, reg 1, control 1",
         "ok\ninjected\nok\ninjected\nok\nok\nok\n"},
        {"taskStart=EIO*1", "init, reg 1, start 1, scene 1, end 1, start 1, end 1",
         "ok\nok\ninjected\nok\nok\nok\nok\n"},
        {"taskEnd=EIO*1", "init, reg 1, start 1, end 1, start 1, end 1, end 1",
         "ok\nok\nok\ninjected\nok\nok\nnote: end of a task that does not run\n"},
        {"36=EIO*1, 37=EIO*1", "init, open-span, close-span, close-span, open-span, close-span",
         "ok\ninjected\ninjected\nok\nok\nok\n"},
        {"init=EIO*1", "init, reg 1, start 1, uninit, init", "injected\nok\nok\nok\nok\n"},
        {"uninit=EIO*1", "init, reg 1, uninit, init, reg 1", "ok\nok\ninjected\nok\nok\n"},
        {"vsync=EIO", "init, vsync, vsync, vsync", "ok\ninjected\ninjected\ninjected\n"},
};

TEST(DriverModelHistory, IsHeldAgainstEveryCommand) {
    for (const HistoryCase& c : kHistoryCases) {
        SCOPED_TRACE(fmt::format("{} with \"{}\"", c.script, c.faults));
        ScriptedDriver driver;
        driver.model.injectFaults(InjectedFaults::parse(c.faults));
        EXPECT_EQ(driver.play(c.script), c.verdicts);
    }
}

TEST(DriverModelHistory, RemembersARegistrationThatItRefusedByItself) {
    ScriptedDriver driver;
    driver.play("init");
    VELK_TASK_INIT_PARAM record = taskInitRecord(1);
    record.defaultUclamp = 2000;
    EXPECT_EQ(driver.send(VELK_IOC_TASK_INIT, record), -EINVAL);
    EXPECT_EQ(driver.play("start 1"), "note: start of a task whose registration was refused\n");
}

TEST(DriverModelCalls, AreRefusedWithTheErrnoOfTheirFault) {
    ScriptedDriver driver;
    const VELK_INIT_PARAM record = initRecord();
    EXPECT_EQ(driver.model.command(kNode + 1, VELK_IOC_INIT, &record, kTid), -EBADF);
    EXPECT_EQ(driver.model.command(kNode, VELK_IOC_INIT + 1, &record, kTid), -ENOTTY);
    EXPECT_EQ(driver.model.command(kNode, VELK_IOC_INIT, nullptr, kTid), -EFAULT);
    EXPECT_EQ(driver.model.close(kNode, kTid), 0);
    EXPECT_EQ(driver.model.close(kNode, kTid), -EBADF);
    EXPECT_EQ(driver.model.command(kNode, VELK_IOC_INIT, &record, kTid), -EBADF);

    driver.model.injectFaults(InjectedFaults::parse("open=EACCES*1"));
    EXPECT_EQ(driver.model.open(kNode, kTid), -EACCES);
    EXPECT_EQ(driver.model.open(kNode, kTid), 0);
    driver.model.injectFaults(InjectedFaults::parse("absent"));
    EXPECT_EQ(driver.model.open(kNode, kTid), -ENOENT);

    const DriverSnapshot snapshot = driver.model.snapshot();
    EXPECT_EQ(snapshot.openDescriptors, 1U);
    EXPECT_EQ(snapshot.opens.accepted, 2U);
    EXPECT_EQ(snapshot.opens.refusedInjected, 2U);
    EXPECT_EQ(snapshot.closes.accepted, 1U);
    EXPECT_EQ(snapshot.closes.refused, 1U);
    EXPECT_EQ(snapshot.commands[0].refused, 3U);
    EXPECT_EQ(snapshot.otherRequests.refused, 1U);
}

TEST(DriverModelEvents, TellTheCallAndItsOutcome) {
    static std::atomic<int64_t> now = 0;
    setClock([]() noexcept { return now += 1000; });
    ScriptedDriver driver;
    driver.model.injectFaults(InjectedFaults::parse("vsync=EIO, slow=vsync:1us"));
    const VELK_VSYNC_PARAM vsync = {};
    driver.send(VELK_IOC_VSYNC, vsync);
    driver.model.open(kNode + 1, 77);
    setClock(nullptr);

    ASSERT_EQ(driver.recorder->events.size(), 2U);
    const DriverEvent& command = driver.recorder->events[0];
    EXPECT_EQ(command.call, DriverCall::Command);
    EXPECT_EQ(command.verdict, Verdict::InjectedRefusal);
    EXPECT_EQ(command.sequence, 2U);  // the first open came before the observer
    EXPECT_EQ(command.timeNs, 2000);
    EXPECT_EQ(command.tid, kTid);
    EXPECT_EQ(command.descriptor, kNode);
    EXPECT_EQ(command.request, VELK_IOC_VSYNC);
    EXPECT_STREQ(command.command->name, "vsync");
    EXPECT_EQ(command.record, &vsync);
    EXPECT_EQ(command.recordSize, sizeof vsync);
    EXPECT_EQ(command.error, EIO);
    const DriverEvent& open = driver.recorder->events[1];
    EXPECT_EQ(open.call, DriverCall::Open);
    EXPECT_EQ(open.descriptor, kNode + 1);
    EXPECT_EQ(open.tid, 77U);
    EXPECT_EQ(open.error, 0);
}

TEST(DriverModelSnapshot, ShowsTasksRunsSpansAndCounters) {
    ScriptedDriver driver;
    driver.model.injectFaults(InjectedFaults::parse("taskInit=EINVAL*2"));
    driver.play(
            "init, reg 2, reg 3, reg 1, reg 2, start 1 @5, start 2 @4, end 1 @5, vsync, start 1 "
            "@6, start 1 @4, open-span @4, open-span @3, control, close-span @9, uninit");

    const DriverSnapshot snapshot = driver.model.snapshot();
    EXPECT_FALSE(snapshot.isInitialised);
    std::string tasks;
    for (const TaskSnapshot& task : snapshot.tasks) {
        tasks += fmt::format("{} {} {}, ", task.registration.uniqueTaskId,
                             task.registration.taskName, task.isRegistered);
    }
    EXPECT_EQ(tasks, "1 render true, 2 render true, 3 render false, ");
    std::string running;
    for (const RunningThread& thread : snapshot.running) {
        running += fmt::format("{}/{} ", thread.tid, thread.uniqueTaskId);
    }
    EXPECT_EQ(running, "4/1 4/2 6/1 ");
    ASSERT_EQ(snapshot.spans.size(), 2U);
    EXPECT_EQ(snapshot.spans[0].tid, 3U);
    EXPECT_EQ(snapshot.spans[1].criticalValue, 500);
    EXPECT_EQ(snapshot.refusedRegistrations, 2U);
    EXPECT_EQ(snapshot.replayedRegistrations, 1U);
    EXPECT_EQ(snapshot.commands[1].accepted, 2U);
    EXPECT_EQ(snapshot.commands[1].refusedInjected, 2U);
    EXPECT_EQ(snapshot.commands[10].noted, 1U);
    EXPECT_EQ(snapshot.commands[10].accepted, 1U);
    ASSERT_EQ(snapshot.findings.size(), 1U);
    EXPECT_EQ(snapshot.findings[0].finding, "end of a critical span that is not open");
    EXPECT_EQ(snapshot.findings[0].count, 1U);

    driver.play("init");
    EXPECT_TRUE(driver.model.snapshot().isInitialised);
    EXPECT_TRUE(driver.model.snapshot().tasks.empty());
    driver.model.reset();
    EXPECT_FALSE(driver.model.snapshot().isInitialised);
    EXPECT_EQ(driver.model.snapshot().openDescriptors, 1U);
}

TEST(DriverModelThreads, ShareOneModel) {
    constexpr int kThreads = 4;
    constexpr uint32_t kRounds = 500;
    ScriptedDriver driver;
    driver.model.setObserver(nullptr);
    driver.send(VELK_IOC_INIT, initRecord());
    std::vector<std::thread> threads;
    for (uint32_t tid = 1; tid <= kThreads; ++tid) {
        threads.emplace_back([&driver, tid] {
            driver.send(VELK_IOC_TASK_INIT, taskInitRecord(tid), tid);
            for (uint32_t i = 0; i < kRounds; ++i) {
                const VELK_TASK_PARAM record = {tid, tid, 0, 0};
                driver.send(VELK_IOC_TASK_START, record, tid);
                driver.send(VELK_IOC_TASK_END, record, tid);
                if (i % 100 == 0) {
                    driver.model.injectFaults({});
                    driver.model.setObserver(nullptr);
                    driver.model.snapshot();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const DriverSnapshot snapshot = driver.model.snapshot();
    EXPECT_EQ(snapshot.commands[2].accepted, uint64_t{kThreads} * kRounds);
    EXPECT_TRUE(snapshot.findings.empty());
    EXPECT_EQ(snapshot.commands[3].accepted, uint64_t{kThreads} * kRounds);
    EXPECT_TRUE(snapshot.running.empty());
}

}  // namespace
}  // namespace desk
