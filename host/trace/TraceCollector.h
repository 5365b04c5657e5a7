/*
 * Android trace sections on the desk. While tracing is on, the beginning and the end of every
 * section are kept, with time and thread, until they are drained.
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

// At most so many are kept; later ones are dropped and counted.
inline constexpr size_t kMaxPendingTraceEvents = 65536;

// Switches the camera tag on or off. Off, nothing is collected; what was kept can still be drained.
void setTracing(bool isOn);

// Replaces the content of `events` by what was kept, in order. Draining into the same vector again
// needs no new memory.
void drainTrace(std::vector<TraceEvent>& events);

// How many were dropped since the process began.
uint64_t droppedTraceEvents();

}  // namespace desk
