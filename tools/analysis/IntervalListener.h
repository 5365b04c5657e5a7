/*
 * How the analysis reports each run, pass and span of a session when it ends.
 */
#pragma once

#include <cstdint>
#include <string_view>

namespace desk {

// Times are recorded ones, in microseconds. Threads have the numbers of the session.
struct EndedRun {
    uint32_t thread = 0;
    int task = 0;
    std::string_view name;  // of the last registration
    int64_t sinceUs = 0;
    int64_t untilUs = 0;
    int32_t targetUs = 0;
};

struct EndedPass {
    int32_t anchor = 0;
    int64_t sinceUs = 0;
    int64_t untilUs = 0;
    int32_t targetUs = 0;  // of the latency; 0: none
};

struct EndedSpan {
    uint32_t thread = 0;
    int64_t sinceUs = 0;
    int64_t untilUs = 0;
};

class IntervalListener {
  public:
    virtual ~IntervalListener() = default;
    virtual void onRun(const EndedRun& run) = 0;
    virtual void onPass(const EndedPass& pass) = 0;
    virtual void onSpan(const EndedSpan& span) = 0;
};

}  // namespace desk
