/*
 * What a camera service would do instead of telling the driver about a task: raise its thread's
 * utilisation clamp itself, or write to a control group. Each action switches the boost on and off
 * again and returns 0 when both took effect.
 */
#pragma once

#include <string>

namespace bench {

struct Alternative {
    std::string name;
    // Why the action is not quite the real thing on this machine, or cannot run; else empty.
    std::string remark;
    int (*action)() = nullptr;
};

Alternative schedulerAttributes();
// The control group that this makes goes when the process exits.
Alternative controlGroup();

}  // namespace bench
