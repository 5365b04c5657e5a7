/*
 * The figures of a session, from which summaries are made. Times are recorded ones, in
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
    uint64_t failed = 0;           // without an injected fault
    uint64_t firstFailedLine = 0;  // line of the first of these
};

// The runs of one task enum. A run lasts from an accepted start to an accepted end. A start by a
// thread that already runs the task does not begin another run.
struct TaskFigures {
    int task = 0;
    std::string name;          // of the last registration
    int32_t targetTimeUs = 0;  // of the last registration
    uint64_t starts = 0;
    uint64_t repeatedStarts = 0;       // those by a thread that already ran the task
    DistributionFigures runs;          // ended runs
    DistributionBars runBars;          // histogram of their times
    uint64_t overTarget = 0;           // ended runs longer than the target in force then
    std::vector<std::string> threads;  // that started it, by first appearance
};

// Critical spans of all threads. A start within a span of the same thread does not begin another.
struct SpanFigures {
    DistributionFigures spans;  // ended spans
    uint64_t nestedStarts = 0;
};

// The passes of one anchor. A pass lasts from the start of a serial to the end of the same serial.
struct AnchorFigures {
    int32_t anchor = 0;
    uint64_t starts = 0;
    uint64_t ends = 0;
    int32_t latencyTargetUs = 0;     // of the last start; 0: none
    int32_t jitterTargetUs = 0;      // of the last start; 0: none
    DistributionFigures latency;     // of passes
    uint64_t overLatencyTarget = 0;  // passes longer than the target given at their start
    DistributionFigures jitter;      // difference of latency from one pass to the next
    uint64_t overJitterTarget = 0;
    uint64_t unmatchedStarts = 0;   // started again before an end, or open at an init
    uint64_t unmatchedEnds = 0;     // without a start of that serial
    uint64_t openAtEnd = 0;         // starts still without an end
    uint64_t outOfOrderStarts = 0;  // serial not above all earlier ones
    uint64_t outOfOrderEnds = 0;
};

// Vsyncs, and the intervals from one to the next. An init begins a new sequence.
struct VsyncFigures {
    uint64_t count = 0;
    DistributionFigures intervals;
    uint64_t missed = 0;  // taking the median interval as the period
};

// A part of the session in which the reported frame rate stayed the same.
struct FrameRateStretch {
    int64_t fromUs = 0;
    int64_t untilUs = 0;
    uint32_t fps = 0;
    std::map<int32_t, uint64_t> anchorEnds;  // ends within the stretch, by anchor
};

struct FrameFigures {
    VsyncFigures vsync;
    std::vector<FrameRateStretch> stretches;  // the first 1000
    uint64_t furtherStretches = 0;
};

// How long the driver held each merged level. The times add up to that of the session.
struct LevelFigures {
    std::vector<std::pair<int32_t, int64_t>> percentLevels;       // ascending, with their times
    std::vector<std::pair<ControlLevels, int64_t>> uclampLevels;  // ascending, 256 at most
    int64_t furtherLevelsUs = 0;                                  // at all other uclamp levels
};

enum class ControlEnd : uint8_t { None, Reset, Uninit };

// One activation of a single-shot control.
struct ControlActivation {
    int32_t category = 0;
    std::string thread;     // that activated it
    std::string_view call;  // that activated it
    uint64_t line = 0;      // of that call
    int64_t fromUs = 0;
    int64_t untilUs = 0;  // the end of the session when nothing ended it
    ControlEnd end = ControlEnd::None;
    std::optional<int32_t> percentLevel;  // that it requests
    std::vector<uint32_t> uclampLevels;
    std::vector<std::pair<int32_t, int32_t>> criticalTaskUclamps;  // by task enum
    uint64_t overlaps = 0;  // other controls that were active during it
};

// Controls not reset by an uninit or by the end, and the values that the library holds for them.
struct UnresetControls {
    std::vector<ControlActivation> controls;  // the first 1000, in the order of their activation
    uint64_t furtherControls = 0;
    std::vector<std::pair<int32_t, int32_t>> taskUclamps;  // largest active uclamp of each task
};

// The single-shot controls that callers activated and the library holds. They include those that
// the driver refused, but not those that init and unsetCriticalTask activate.
struct ControlFigures {
    uint64_t activations = 0;
    uint64_t resets = 0;
    uint64_t unmatchedResets = 0;  // resets that ended no caller's control
    uint64_t neverReset = 0;       // still active at an uninit or at the end
    uint64_t mostAtOnce = 0;
    int64_t activeUs = 0;                 // with at least one active
    int64_t overlapUs = 0;                // with two or more active
    std::vector<ControlActivation> list;  // the first 1000
    uint64_t further = 0;
    UnresetControls active;    // at the end
    UnresetControls atUninit;  // at the last uninit, unless an init followed
};

// A run that has not ended in the last session of the driver.
struct ActiveRun {
    std::string thread;
    int task = 0;
    std::string name;
    int64_t sinceUs = 0;
};

// A critical span that has not ended in the last session of the driver.
struct ActiveSpan {
    std::string thread;
    int32_t criticalValue = 0;
    int64_t sinceUs = 0;
};

struct SessionFigures {
    uint64_t calls = 0;
    size_t threads = 0;
    int64_t recordedUs = 0;                    // from the first call to the last
    std::vector<OperationFigures> operations;  // those called, in the order of the call table
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
