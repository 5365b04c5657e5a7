/*
 * Android trace sections on the desk. While tracing is on, the beginning and the end of every
 * section wait here, with time and thread, until somebody drains them.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace desk {

enum class TracePhase : char { Begin = 'B', End = 'E' };

struct TraceEvent {
    int64_t timeNs = 0;  // of the desk's clock
    uint32_t tid = 0;
    TracePhase phase = TracePhase::Begin;
    std::array<char, 51> nameBuffer = {};  // longer names are cut; empty at the end of a section

    std::string_view name() const { return nameBuffer.data(); }
};

// At most so many wait; later ones are dropped and counted.
inline constexpr size_t kMaxPendingTraceEvents = 65536;

// Switches the camera tag on or off. Off, nothing is collected; what waits can still be drained.
void setTracing(bool isOn);

// Puts what waits into `events`, in order, in place of what was there. A caller that drains into
// the same vector again and again does without new memory.
void drainTrace(std::vector<TraceEvent>& events);

// How many were dropped since the process began.
uint64_t droppedTraceEvents();

}  // namespace desk
