/*
 * Definitions of the exported operations and of ioctl that precede the real ones when preloaded.
 * The C entry points need none: they call the operations.
 */
#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "foundation/CommandTable.h"
#include "record/Operation.h"

#include <cstdarg>

namespace desk {

void* findNext(const char* symbol) {
    if (void* const next = dlsym(RTLD_NEXT, symbol)) {
        return next;
    }
    // A program may have loaded the library with RTLD_LOCAL, which dlsym(RTLD_NEXT) does not
    // search.
    for (const char* library : {"libvelkperfctrl.so.1", "libvelkperfctrl.so"}) {
        if (void* const loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) {
            return dlsym(loaded, symbol);
        }
    }
    return nullptr;
}

namespace {

// Before a command goes to the driver.
void noteCommand(unsigned request) {
    if (findVELKCommand(request) == nullptr) {
        return;
    }
    CallObserver* const observer = callObserver();
    if (observer == nullptr) {
        return;
    }
    if (currentCall == nullptr) {
        observer->onForeignCommand();
    } else if (!currentCall->hadCommand) {
        currentCall->hadCommand = true;
        observer->onFirstCommand(*currentCall->call);
    }
}

}  // namespace
}  // namespace desk

using desk::CallArguments;
using desk::Operation;

int VELKMachine::init(const VELKInitParams& params) {
    static constinit Operation<const VELKInitParams&> operation(
            "init", "_ZN11VELKMachine4initERK14VELKInitParams");
    return operation.call(
            [&params](CallArguments& a) {
                a.driverParam = params.driverParam;
                a.scenario = params.scenario;
                a.customization = params.customization;
                a.queryMaxEfficientFreq = params.queryMaxEfficientFreq;
                a.tuningParam1 = params.tuningParam1;
                a.tuningParam2 = params.tuningParam2;
                a.applyExtraDefaultControl = params.applyExtraDefaultControl;
            },
            params);
}

int VELKMachine::uninit() {
    static constinit Operation<> operation("uninit", "_ZN11VELKMachine6uninitEv");
    return operation.call([](CallArguments& /*none*/) {});
}

int VELKMachine::notifyTaskStart(const void* key, int task, const VELKTaskExtraParams& extra) {
    static constinit Operation<const void*, int, const VELKTaskExtraParams&> operation(
            "notifyTaskStart", "_ZN11VELKMachine15notifyTaskStartEPKviRK19VELKTaskExtraParams");
    return operation.call(
            [key, task, &extra](CallArguments& a) {
                a.key = key;
                a.task = task;
                a.groupHead = extra.groupHead;
                a.extraFlag0 = extra.extraFlag0;
                a.extraFlag1 = extra.extraFlag1;
            },
            key, task, extra);
}

int VELKMachine::notifyTaskStart(const void* key, int task) {
    static constinit Operation<const void*, int> operation(
            "notifyTaskStart", "_ZN11VELKMachine15notifyTaskStartEPKvi");
    return operation.call(
            [key, task](CallArguments& a) {
                a.key = key;
                a.task = task;
            },
            key, task);
}

int VELKMachine::notifyTaskEnd(const void* key, int task) {
    static constinit Operation<const void*, int> operation("notifyTaskEnd",
                                                           "_ZN11VELKMachine13notifyTaskEndEPKvi");
    return operation.call(
            [key, task](CallArguments& a) {
                a.key = key;
                a.task = task;
            },
            key, task);
}

int VELKMachine::notifyTaskSceneChange(int task, VELKSceneChangeMode mode) {
    static constinit Operation<int, VELKSceneChangeMode> operation(
            "notifyTaskSceneChange",
            "_ZN11VELKMachine21notifyTaskSceneChangeEi19VELKSceneChangeMode");
    return operation.call(
            [task, mode](CallArguments& a) {
                a.task = task;
                a.mode = mode;
            },
            task, mode);
}

int VELKMachine::notifySingleShotControl(int category) {
    static constinit Operation<int> operation("notifySingleShotControl",
                                              "_ZN11VELKMachine23notifySingleShotControlEi");
    return operation.call([category](CallArguments& a) { a.category = category; }, category);
}

int VELKMachine::notifySingleShotControl(const VELKSingleShotControl& control) {
    static constinit Operation<const VELKSingleShotControl&> operation(
            "notifySingleShotControl",
            "_ZN11VELKMachine23notifySingleShotControlERK21VELKSingleShotControl");
    return operation.call(
            [&control](CallArguments& a) {
                a.control = std::make_unique<const VELKSingleShotControl>(control);
            },
            control);
}

int VELKMachine::notifyResetSingleShotControl() {
    static constinit Operation<> operation("notifyResetSingleShotControl",
                                           "_ZN11VELKMachine28notifyResetSingleShotControlEv");
    return operation.call([](CallArguments& /*none*/) {});
}

int VELKMachine::notifyResetSingleShotControl(int category) {
    static constinit Operation<int> operation("notifyResetSingleShotControl",
                                              "_ZN11VELKMachine28notifyResetSingleShotControlEi");
    return operation.call([category](CallArguments& a) { a.category = category; }, category);
}

int VELKMachine::markCriticalTask() {
    static constinit Operation<> operation("markCriticalTask",
                                           "_ZN11VELKMachine16markCriticalTaskEv");
    return operation.call([](CallArguments& /*none*/) {});
}

int VELKMachine::markCriticalTask(int user) {
    static constinit Operation<int> operation("markCriticalTask",
                                              "_ZN11VELKMachine16markCriticalTaskEi");
    return operation.call([user](CallArguments& a) { a.user = user; }, user);
}

int VELKMachine::unsetCriticalTask() {
    static constinit Operation<> operation("unsetCriticalTask",
                                           "_ZN11VELKMachine17unsetCriticalTaskEv");
    return operation.call([](CallArguments& /*none*/) {});
}

int VELKMachine::notifySingleShotCriticalTaskStart(int task) {
    static constinit Operation<int> operation(
            "notifySingleShotCriticalTaskStart",
            "_ZN11VELKMachine33notifySingleShotCriticalTaskStartEi");
    return operation.call([task](CallArguments& a) { a.task = task; }, task);
}

int VELKMachine::notifySingleShotCriticalTaskEnd(int task) {
    static constinit Operation<int> operation(
            "notifySingleShotCriticalTaskEnd",
            "_ZN11VELKMachine31notifySingleShotCriticalTaskEndEi");
    return operation.call([task](CallArguments& a) { a.task = task; }, task);
}

int VELKMachine::notifyAnchorPointStart(int anchor, unsigned int serial) {
    static constinit Operation<int, unsigned> operation(
            "notifyAnchorPointStart", "_ZN11VELKMachine22notifyAnchorPointStartEij");
    return operation.call(
            [anchor, serial](CallArguments& a) {
                a.anchor = anchor;
                a.serial = serial;
            },
            anchor, serial);
}

int VELKMachine::notifyAnchorPointEnd(int anchor, unsigned int serial) {
    static constinit Operation<int, unsigned> operation(
            "notifyAnchorPointEnd", "_ZN11VELKMachine20notifyAnchorPointEndEij");
    return operation.call(
            [anchor, serial](CallArguments& a) {
                a.anchor = anchor;
                a.serial = serial;
            },
            anchor, serial);
}

int VELKInfoNotifier::notifyVSync() {
    static constinit Operation<> operation("notifyVSync", "_ZN16VELKInfoNotifier11notifyVSyncEv");
    return operation.call([](CallArguments& /*none*/) {});
}

int VELKInfoNotifier::notifyCamFps(float fps) {
    static constinit Operation<float> operation("notifyCamFps",
                                                "_ZN16VELKInfoNotifier12notifyCamFpsEf");
    return operation.call([fps](CallArguments& a) { a.fps = fps; }, fps);
}

#ifdef __BIONIC__
using Request = int;
#else
using Request = unsigned long;
#endif

extern "C" VELK_API int ioctl(int descriptor, Request request, ...) noexcept {
    using Ioctl = int(int, Request, ...);
    static auto* const next = reinterpret_cast<Ioctl*>(desk::findNext("ioctl"));
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    desk::noteCommand(static_cast<unsigned>(request));
    return next(descriptor, request, argument);
}
