#include "VELKMachineCus.h"

#include "VELKMachine.h"

// The calls go through the exported members, so that code that interposes a member sees them too.

int notifyTaskStartExtraCus(const void* key, int task, const VELKTaskExtraParams* extra) {
    return VELKMachine::notifyTaskStart(key, task, *extra);
}

int notifyTaskEndCus(const void* key, int task) {
    return VELKMachine::notifyTaskEnd(key, task);
}

int notifyTaskSceneChangeCus(int task, VELKSceneChangeMode mode) {
    return VELKMachine::notifyTaskSceneChange(task, mode);
}

int notifySingleShotControlUserCus(int category) {
    return VELKMachine::notifySingleShotControl(category);
}

int notifySingleShotControlCus(const VELKSingleShotControl* control) {
    return VELKMachine::notifySingleShotControl(*control);
}

int notifyResetSingleShotControlUserCus(int category) {
    return VELKMachine::notifyResetSingleShotControl(category);
}

int notifyResetSingleShotControlCus() {
    return VELKMachine::notifyResetSingleShotControl();
}

int markCriticalTaskCus() {
    return VELKMachine::markCriticalTask();
}

int markCriticalTaskUserCus(int user) {
    return VELKMachine::markCriticalTask(user);
}

int unsetCriticalTaskCus() {
    return VELKMachine::unsetCriticalTask();
}

int notifySingleShotCriticalTaskStartCus(int task) {
    return VELKMachine::notifySingleShotCriticalTaskStart(task);
}

int notifySingleShotCriticalTaskEndCus(int task) {
    return VELKMachine::notifySingleShotCriticalTaskEnd(task);
}

int notifyAnchorPointStartCus(int anchor, unsigned int serial) {
    return VELKMachine::notifyAnchorPointStart(anchor, serial);
}

int notifyAnchorPointEndCus(int anchor, unsigned int serial) {
    return VELKMachine::notifyAnchorPointEnd(anchor, serial);
}
