/*
 * Counts what happens while a session is played, in memory that does not depend on its length.
 */
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "play/PlayedCall.h"

namespace desk {

// The calls of one operation.
struct CallStatistics {
    std::string_view name;
    uint64_t calls = 0;
    uint64_t failedInjected = 0;
    uint64_t failed = 0;           // unexpectedly
    uint64_t firstFailedLine = 0;  // of these
};

// The runs of one task enum in recorded time. A run is a start that the driver accepted.
struct TaskStatistics {
    int task = 0;
    std::string name;          // as registered
    int32_t targetTimeUs = 0;  // as registered
    uint64_t starts = 0;
    uint64_t ends = 0;
    uint64_t overTarget = 0;  // of the ended ones
    int64_t totalRunUs = 0;
    int64_t longestRunUs = 0;
};

class Statistics : public CallListener {
  public:
    void onCall(const PlayedCall& played) override;

    uint64_t calls() const { return mCalls; }
    size_t threads() const { return mThreads.size(); }
    int64_t recordedUs() const { return mLastUs; }

    // One of each operation that was called, by name.
    std::vector<CallStatistics> byOperation() const;
    const std::map<int, TaskStatistics>& byTask() const { return mTasks; }
    // Of the thread that has this id, or empty.
    std::string threadName(uint32_t tid) const;
    // Of the task that was last registered with this id, or null.
    const TaskStatistics* findTask(uint32_t uniqueTaskId) const;
    // When the thread last started that task, and when it last started a critical span.
    int64_t runStartUs(uint32_t tid, uint32_t uniqueTaskId) const;
    int64_t spanStartUs(uint32_t tid) const;

  private:
    struct Thread {
        std::string name;
        uint32_t tid = 0;
        int64_t spanStartUs = 0;
    };
    struct Run {
        uint32_t tid = 0;
        int64_t sinceUs = 0;
    };
    // A unique task id of the driver's current session.
    struct RegisteredTask {
        TaskStatistics* statistics = nullptr;
        std::vector<Run> runs;
    };

    const Thread* findThread(uint32_t tid) const;
    void countCall(const PlayedCall& played);
    void takeThread(const PlayedCall& played);
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);
    void registerTask(const PlayedCall& played, const VELK_TASK_INIT_PARAM& record);
    void startTask(const PlayedCall& played, const VELK_TASK_PARAM& record);
    void endTask(const PlayedCall& played, const VELK_TASK_PARAM& record);

    uint64_t mCalls = 0;
    int64_t mLastUs = 0;
    std::map<const CallInfo*, CallStatistics> mOperations;  // in the order of the table
    std::vector<Thread> mThreads;                           // by the session's thread number
    std::map<int, TaskStatistics> mTasks;
    std::unordered_map<uint32_t, RegisteredTask> mRegistered;  // by unique task id
};

}  // namespace desk
