/*
 * A section of the Android trace under the camera tag, open for the length of a scope.
 */
#pragma once

#include <cutils/trace.h>

#include <cstdint>

#include "foundation/Visibility.h"

// The platform's header declares these two only inside inline helpers, which test the one tag that
// a source file defines.
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

    // Tests the tag again instead of remembering whether the section was begun. An exception from
    // the trace function would leave a destructor, which ends the process.
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
