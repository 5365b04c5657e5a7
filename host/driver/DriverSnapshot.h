/*
 * The state of the driver model at one moment. An init command begins a new session: it clears the
 * tasks, threads, spans and the control. An uninit ends the control and leaves the rest,
 * so that a report can show what was never ended.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "driver/MergedControl.h"
#include "foundation/CommandTable.h"

namespace desk {

struct TaskSnapshot {
    VELK_TASK_INIT_PARAM registration = {};  // the last accepted, else the last received
    bool isRegistered = false;               // false: every registration of it was refused
};

struct RunningThread {
    uint32_t tid = 0;
    uint32_t uniqueTaskId = 0;
};

struct CriticalSpan {
    uint32_t tid = 0;
    int32_t criticalValue = 0;
};

struct CallCounters {
    uint64_t accepted = 0;  // includes the noted ones
    uint64_t noted = 0;
    uint64_t refusedInjected = 0;
    uint64_t refused = 0;
};

struct FindingCount {
    std::string finding;
    uint64_t count = 0;
};

struct DriverSnapshot {
    bool isInitialised = false;
    size_t openDescriptors = 0;
    std::vector<TaskSnapshot> tasks;     // by unique task id
    std::vector<RunningThread> running;  // by thread id, then unique task id
    std::vector<CriticalSpan> spans;     // by thread id
    MergedControl control;
    MergedControl controlAtUninit;  // what the last uninit ended

    CallCounters opens;
    CallCounters closes;
    std::array<CallCounters, VELK_COMMANDS.size()> commands = {};  // by place in the command table
    CallCounters otherRequests;                                    // requests of no command
    uint64_t refusedRegistrations = 0;                             // every refused command 28
    uint64_t replayedRegistrations = 0;  // accepted ones of a task that was refused before
    std::vector<FindingCount> findings;  // by first appearance
};

}  // namespace desk
