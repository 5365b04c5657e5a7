#include "play/CallRunner.h"

#include <cutils/properties.h>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"

namespace desk {

namespace {

// The library uses the value of a key alone.
const void* keyPointer(uint64_t key) {
    return reinterpret_cast<const void*>(static_cast<uintptr_t>(key));
}

struct Runner {
    int operator()(const InitCall& call) const { return VELKMachine::init(call.params); }
    int operator()(const UninitCall&) const { return VELKMachine::uninit(); }
    int operator()(const TaskStartCall& call) const {
        return call.extra
                       ? VELKMachine::notifyTaskStart(keyPointer(call.key), call.task, *call.extra)
                       : VELKMachine::notifyTaskStart(keyPointer(call.key), call.task);
    }
    int operator()(const TaskEndCall& call) const {
        return VELKMachine::notifyTaskEnd(keyPointer(call.key), call.task);
    }
    int operator()(const SceneChangeCall& call) const {
        return VELKMachine::notifyTaskSceneChange(call.task, call.mode);
    }
    int operator()(const CategoryControlCall& call) const {
        return VELKMachine::notifySingleShotControl(call.category);
    }
    int operator()(const RecordControlCall& call) const {
        return VELKMachine::notifySingleShotControl(*call.control);
    }
    int operator()(const ResetControlCall& call) const {
        return call.category ? VELKMachine::notifyResetSingleShotControl(*call.category)
                             : VELKMachine::notifyResetSingleShotControl();
    }
    int operator()(const MarkCriticalCall& call) const {
        return call.user ? VELKMachine::markCriticalTask(*call.user)
                         : VELKMachine::markCriticalTask();
    }
    int operator()(const UnsetCriticalCall&) const { return VELKMachine::unsetCriticalTask(); }
    int operator()(const SpanStartCall& call) const {
        return VELKMachine::notifySingleShotCriticalTaskStart(call.task);
    }
    int operator()(const SpanEndCall& call) const {
        return VELKMachine::notifySingleShotCriticalTaskEnd(call.task);
    }
    int operator()(const AnchorStartCall& call) const {
        return VELKMachine::notifyAnchorPointStart(call.anchor, call.serial);
    }
    int operator()(const AnchorEndCall& call) const {
        return VELKMachine::notifyAnchorPointEnd(call.anchor, call.serial);
    }
    int operator()(const VSyncCall&) const { return VELKInfoNotifier::notifyVSync(); }
    int operator()(const CamFpsCall& call) const {
        return VELKInfoNotifier::notifyCamFps(call.fps);
    }
    int operator()(const SetPropertyCall& call) const {
        return property_set(call.name.c_str(), call.value.c_str());
    }
};

}  // namespace

int runCall(const Operation& operation) {
    return std::visit(Runner(), operation);
}

}  // namespace desk
