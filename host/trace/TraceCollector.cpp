#include "trace/TraceCollector.h"

#include <cutils/trace.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "clock/DeskClock.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

struct Collector {
    std::atomic<uint64_t> tags = 0;
    std::atomic<uint64_t> dropped = 0;
    std::mutex mutex;
    std::vector<TraceEvent> pending;  // allocated when tracing is switched on
};

// Never destroyed: other threads may trace while the process exits.
Collector& collector() {
    static Collector& instance = *new Collector;
    return instance;
}

void collect(TracePhase phase, std::string_view name) noexcept {
    Collector& self = collector();
    TraceEvent event;
    event.tid = currentTid();
    event.phase = phase;
    // The last byte stays zero.
    std::ranges::copy(cutToBytes(name, event.nameBuffer.size() - 1), event.nameBuffer.begin());

    const std::lock_guard lock(self.mutex);
    event.timeNs = nowNs();
    if (self.pending.size() < self.pending.capacity()) {
        self.pending.push_back(event);
    } else {
        ++self.dropped;
    }
}

}  // namespace

void setTracing(bool isOn) {
    Collector& self = collector();
    if (isOn) {
        const std::lock_guard lock(self.mutex);
        self.pending.reserve(kMaxPendingTraceEvents);
    }
    self.tags.store(isOn ? ATRACE_TAG_CAMERA : 0, std::memory_order_relaxed);
}

void drainTrace(std::vector<TraceEvent>& events) {
    Collector& self = collector();
    events.clear();
    events.reserve(kMaxPendingTraceEvents);
    const std::lock_guard lock(self.mutex);
    self.pending.swap(events);
}

uint64_t droppedTraceEvents() {
    return collector().dropped;
}

}  // namespace desk

uint64_t atrace_get_enabled_tags() {
    return desk::collector().tags.load(std::memory_order_relaxed);
}

void atrace_begin_body(const char* name) {
    if (atrace_get_enabled_tags() != 0) {
        desk::collect(desk::TracePhase::Begin, name);
    }
}

void atrace_end_body() {
    if (atrace_get_enabled_tags() != 0) {
        desk::collect(desk::TracePhase::End, {});
    }
}
