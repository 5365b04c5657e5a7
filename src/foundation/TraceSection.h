/*
 * A section of the Android trace under the camera tag, open for the length of a scope.
 */
#pragma once

#include <cutils/trace.h>

#include <cstdint>

#include "foundation/Visibility.h"

// The platform's header declares these two within its inline helpers only, and those test the tag
// of a whole source file.
extern "C" void atrace_begin_body(const char* name);
extern "C" void atrace_end_body();

inline constexpr uint64_t kCameraTraceTag = 0x400;

class VELK_INTERNAL TraceSection {
  public:
    // `name` must outlive the call; every name is a literal.
    explicit TraceSection(const char* name) {
        if (isCameraTagEnabled()) {
            atrace_begin_body(name);
        }
    }

    // Decides by the tags as they are now, not by what the begin found. An exception out of the
    // trace itself has nowhere to go from here and ends the process.
    ~TraceSection() {
        if (isCameraTagEnabled()) {
            atrace_end_body();
        }
    }

    TraceSection(const TraceSection&) = delete;
    TraceSection& operator=(const TraceSection&) = delete;

  private:
    static bool isCameraTagEnabled() { return (atrace_get_enabled_tags() & kCameraTraceTag) != 0; }
};
