/*
 * What a session shows: every figure that summaries are made of. Times are recorded ones, in
 * microseconds.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/Distribution.h"
#include "driver/MergedControl.h"

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
    DistributionBars runBars;          // their times
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

// Vsyncs, and the intervals from one to the next. No interval reaches across an init.
struct VsyncFigures {
    uint64_t count = 0;
    DistributionFigures intervals;
    uint64_t missed = 0;  // with the median interval as the period
};

// A part of the session for which the told frame rate stayed the same.
struct FrameRateStretch {
    int64_t fromUs = 0;
    int64_t untilUs = 0;
    uint32_t fps = 0;
    std::map<int32_t, uint64_t> anchorEnds;  // by anchor, those that ended within it
};

struct FrameFigures {
    VsyncFigures vsync;
    std::vector<FrameRateStretch> stretches;  // the first 1000
    uint64_t furtherStretches = 0;
};

// For how long the driver held which merged levels. The times add up to those of the session.
struct LevelFigures {
    std::vector<std::pair<int32_t, int64_t>> percentLevels;       // upwards, each with its time
    std::vector<std::pair<ControlLevels, int64_t>> uclampLevels;  // likewise, 256 different ones
    int64_t furtherLevelsUs = 0;                                  // of all other uclamp levels
};

enum class ControlEnd : uint8_t { None, Reset, Uninit };

// One activation of a single-shot control.
struct ControlActivation {
    int32_t category = 0;
    std::string thread;     // that activated it
    std::string_view call;  // by which it did so
    uint64_t line = 0;      // of that call
    int64_t fromUs = 0;
    int64_t untilUs = 0;  // the end of the session where nothing ended it
    ControlEnd end = ControlEnd::None;
    std::optional<int32_t> percentLevel;  // what it asks for
    std::vector<uint32_t> uclampLevels;
    std::vector<std::pair<int32_t, int32_t>> criticalTaskUclamps;  // by task enum
    uint64_t overlaps = 0;  // how many other controls were active at some time between
};

// Controls that nobody has reset, at an uninit or at the end, and what the library holds for them.
struct UnresetControls {
    std::vector<ControlActivation> controls;  // the first 1000, in the order of their activation
    uint64_t furtherControls = 0;
    std::vector<std::pair<int32_t, int32_t>> taskUclamps;  // largest active uclamp of each task
};

// The single-shot controls that callers activated, as the library holds them: also those that the
// driver refused, not those that init and unsetCriticalTask activate.
struct ControlFigures {
    uint64_t activations = 0;
    uint64_t resets = 0;
    uint64_t unmatchedResets = 0;  // that ended none of these controls
    uint64_t neverReset = 0;       // that an uninit or the session's end found active
    uint64_t mostAtOnce = 0;
    int64_t activeUs = 0;                 // with at least one
    int64_t overlapUs = 0;                // with two and more
    std::vector<ControlActivation> list;  // the first 1000
    uint64_t further = 0;
    UnresetControls active;    // at the end
    UnresetControls atUninit;  // at the last uninit, if no init came after it
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
    std::vector<AnchorFigures> anchors;  // by number
    FrameFigures frames;
    LevelFigures levels;
    ControlFigures controls;
    std::vector<ActiveRun> activeRuns;    // by thread id, then unique task id
    std::vector<ActiveSpan> activeSpans;  // by thread id
};

}  // namespace desk
