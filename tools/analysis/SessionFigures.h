/*
 * What a session shows: every figure that summaries are made of. Times are recorded ones, in
 * microseconds.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/Distribution.h"

namespace desk {

// The calls of one operation.
struct OperationFigures {
    std::string_view name;
    uint64_t calls = 0;
    uint64_t failedInjected = 0;
    uint64_t failed = 0;           // unexpectedly
    uint64_t firstFailedLine = 0;  // of these
};

// The runs of one task enum. A run goes from a start that the driver accepted to an end that it
// accepted. A start by a thread that runs the task already begins no other run.
struct TaskFigures {
    int task = 0;
    std::string name;          // as registered last
    int32_t targetTimeUs = 0;  // as registered last
    uint64_t starts = 0;
    uint64_t repeatedStarts = 0;       // of these, by a thread that ran the task already
    DistributionFigures runs;          // the ended ones
    uint64_t overTarget = 0;           // of these, longer than the target of their time
    std::vector<std::string> threads;  // that started it, by first appearance in the session
};

// Critical spans of all threads. A start within a span of the same thread begins no other.
struct SpanFigures {
    DistributionFigures spans;  // the ended ones
    uint64_t nestedStarts = 0;
};

// The passes of one anchor. A pass goes from the start of a serial to the end of the same serial.
struct AnchorFigures {
    int32_t anchor = 0;
    uint64_t starts = 0;
    uint64_t ends = 0;
    int32_t latencyTargetUs = 0;     // of the last start; 0: none
    int32_t jitterTargetUs = 0;      // likewise
    DistributionFigures latency;     // of passes
    uint64_t overLatencyTarget = 0;  // passes longer than the target that their start told
    DistributionFigures jitter;  // from the second pass on: change of latency since the last one
    uint64_t overJitterTarget = 0;
    uint64_t unmatchedStarts = 0;   // whose serial started again, or that were open at an init
    uint64_t unmatchedEnds = 0;     // of a serial that had not started
    uint64_t openAtEnd = 0;         // starts without an end so far
    uint64_t outOfOrderStarts = 0;  // with a serial not above all before
    uint64_t outOfOrderEnds = 0;
};

// A run or span without an end in the last session of the driver.
struct ActiveRun {
    std::string thread;
    int task = 0;
    std::string name;
    int64_t sinceUs = 0;
};

struct ActiveSpan {
    std::string thread;
    int32_t criticalValue = 0;
    int64_t sinceUs = 0;
};

struct SessionFigures {
    uint64_t calls = 0;
    size_t threads = 0;
    int64_t recordedUs = 0;                    // from the first call to the last
    std::vector<OperationFigures> operations;  // those that were called, by place in the call table
    std::vector<TaskFigures> tasks;            // by task enum
    SpanFigures spans;
    std::vector<AnchorFigures> anchors;   // by number
    std::vector<ActiveRun> activeRuns;    // by thread id, then unique task id
    std::vector<ActiveSpan> activeSpans;  // by thread id
};

}  // namespace desk
