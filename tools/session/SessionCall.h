/*
 * One call of a recorded camera session, with its arguments. Each kind of call bears the name of
 * the operation that it calls.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "VELKTypes.h"

namespace desk {

struct InitCall {
    static constexpr const char* kName = "init";

    VELKInitParams params = {};
};
struct UninitCall {
    static constexpr const char* kName = "uninit";
};
struct TaskStartCall {
    static constexpr const char* kName = "notifyTaskStart";

    uint64_t key = 0;
    int task = 0;
    std::optional<VELKTaskExtraParams> extra;
};
struct TaskEndCall {
    static constexpr const char* kName = "notifyTaskEnd";

    uint64_t key = 0;
    int task = 0;
};
struct SceneChangeCall {
    static constexpr const char* kName = "notifyTaskSceneChange";

    int task = 0;
    VELKSceneChangeMode mode = {};
};
struct CategoryControlCall {
    static constexpr const char* kName = "notifySingleShotControl";

    int category = 0;
};
struct RecordControlCall {
    static constexpr const char* kName = "notifySingleShotControl";

    std::unique_ptr<const VELKSingleShotControl> control;
};
struct ResetControlCall {
    static constexpr const char* kName = "notifyResetSingleShotControl";

    std::optional<int> category;
};
struct MarkCriticalCall {
    static constexpr const char* kName = "markCriticalTask";

    std::optional<int> user;
};
struct UnsetCriticalCall {
    static constexpr const char* kName = "unsetCriticalTask";
};
struct SpanStartCall {
    static constexpr const char* kName = "notifySingleShotCriticalTaskStart";

    int task = 0;
};
struct SpanEndCall {
    static constexpr const char* kName = "notifySingleShotCriticalTaskEnd";

    int task = 0;
};
struct AnchorStartCall {
    static constexpr const char* kName = "notifyAnchorPointStart";

    int anchor = 0;
    unsigned int serial = 0;
};
struct AnchorEndCall {
    static constexpr const char* kName = "notifyAnchorPointEnd";

    int anchor = 0;
    unsigned int serial = 0;
};
struct VSyncCall {
    static constexpr const char* kName = "notifyVSync";
};
struct CamFpsCall {
    static constexpr const char* kName = "notifyCamFps";

    float fps = 0;
};
struct SetPropertyCall {
    static constexpr const char* kName = "setProperty";

    std::string name;
    std::string value;
};

using Operation =
        std::variant<InitCall, UninitCall, TaskStartCall, TaskEndCall, SceneChangeCall,
                     CategoryControlCall, RecordControlCall, ResetControlCall, MarkCriticalCall,
                     UnsetCriticalCall, SpanStartCall, SpanEndCall, AnchorStartCall, AnchorEndCall,
                     VSyncCall, CamFpsCall, SetPropertyCall>;

struct SessionCall {
    uint64_t line = 0;       // of the session file
    uint64_t endOffset = 0;  // of the line, in bytes from the start of the session
    int64_t atUs = 0;
    uint32_t thread = 0;  // 0, 1, 2, ... in the order of first appearance
    Operation operation;
};

// The name by which a session calls the operation.
inline const char* operationName(const Operation& operation) {
    return std::visit([](const auto& call) { return call.kName; }, operation);
}

}  // namespace desk
