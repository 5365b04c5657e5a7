/*
 * The entry operations: lifecycle, tasks, single-shot controls, critical tasks, anchor points and
 * frame information. The tables that they use belong to VELKRescManagement.
 *
 * How the instance is protected. Operations that hold the global mutex use gResource. All others
 * use gPublishedResource, which counts them as inside. The last uninit hides the instance there,
 * waits for the calls inside, and only then destroys the instance. A descriptor in gDeviceFd is
 * closed in the same manner.
 */
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "VELKSettingsProvider.h"
#include "foundation/CommandChannel.h"
#include "foundation/InheritingMutex.h"
#include "foundation/LogGate.h"
#include "foundation/NeverDestroyed.h"
#include "foundation/Published.h"
#include "foundation/Rollback.h"
#include "foundation/RuntimeSwitches.h"
#include "foundation/ThreadSafety.h"
#include "foundation/TraceSection.h"
#include "resource/AnchorTable.h"
#include "resource/SingleShotRecord.h"
#include "resource/VELKRescManagement.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = -1;

constexpr int32_t kDefaultTuningParam1 = 10;
constexpr int32_t kDefaultTuningParam2 = 65;
constexpr size_t kMaxShortName = sizeof(VELK_TASK_INIT_PARAM::taskName) - 1;
constexpr int kDefaultUser = 4;
constexpr int kHandedOverCategory = 0;

NeverDestroyed<InheritingMutex> gGlobalMutexStorage;
InheritingMutex& gGlobalMutex = gGlobalMutexStorage.object;

constinit NeverDestroyed<std::unique_ptr<VELKRescManagement>> gResourceStorage;
std::unique_ptr<VELKRescManagement>& gResource VELK_GUARDED_BY(gGlobalMutex) =
        gResourceStorage.object;

constinit std::atomic<uint32_t> gUseCount = 0;

using ResourceUse = Published<VELKRescManagement>::Use;

constexpr int resultOf(bool sent) {
    return sent ? kSuccess : kFailure;
}

// Early returns while the library is down, kept out of line.
[[gnu::cold, gnu::noinline]] int failCheckInit() {
    VELK_LOGD("no VELKResource exists, check init()");
    return kFailure;
}

[[gnu::cold, gnu::noinline]] int failCheckInitGated() {
    VELK_LOGD_GATED("no VELKResource exists, check init()");
    return kFailure;
}

[[gnu::cold, gnu::noinline]] int failNoInit() {
    VELK_LOGD("no VELKResource exists, may haven't process init()");
    return kFailure;
}

[[gnu::cold, gnu::noinline]] int failNoInitGated() {
    VELK_LOGD_GATED("no VELKResource exists, may haven't process init()");
    return kFailure;
}

void publishResource(std::unique_ptr<VELKRescManagement> resource) VELK_REQUIRES(gGlobalMutex) {
    gResource = std::move(resource);
    gPublishedResource.publish(gResource.get());
}

void destroyResource() noexcept VELK_REQUIRES(gGlobalMutex) {
    if (gResource == nullptr) {
        return;
    }
    gPublishedResource.hide();
    gPublishedResource.waitForCallsInside();
    gResource.reset();
}

// Closes a descriptor that no new call can find, after the calls that may be sending on it.
void closeWhenUnused(int32_t fd) noexcept VELK_REQUIRES(gGlobalMutex) {
    if (fd >= 0) {
        gPublishedResource.waitForCallsInside();
        close(fd);
    }
}

// Closes the descriptor that marking opened while the library was down. kNodeAbsent is kept.
void closeTemporaryDevice() noexcept VELK_REQUIRES(gGlobalMutex) {
    int32_t fd = gDeviceFd.load();
    while (fd >= 0 && !gDeviceFd.compare_exchange_weak(fd, kNotOpened)) {
    }
    closeWhenUnused(fd);
}

// The descriptor for a command that is sent while the library is down, opened on first need. Two
// first calls may both open the node; the later descriptor is kept and the earlier one stays open.
bool openTemporaryDevice(int32_t& fd) {
    fd = gDeviceFd.load();
    if (fd != kNotOpened) {
        return true;
    }
    if (!openVELKDevice(fd)) {
        return false;
    }
    gDeviceFd.store(fd);
    return true;
}

// Destroys an instance that is still there when the process exits or the library is unloaded.
// Threads may still be running: when a call is inside, the instance is kept, and the kernel closes
// its descriptor.
class ExitTeardown {
  public:
    ~ExitTeardown() {
        if (gGlobalMutex.try_lock()) {
            gPublishedResource.hide();
            if (gPublishedResource.isQuiet()) {
                gResource.reset();
            }
            gGlobalMutex.unlock();
        }
    }
};
const ExitTeardown gExitTeardown;

}  // namespace

// --- Lifecycle -----------------------------------------------------------------------------------

namespace {

[[gnu::cold]] VELK_INIT_PARAM buildInitRecord(const VELKRescManagement& resource) {
    const VELKInitParams& params = resource.initParams();
    VELK_INIT_PARAM record{};
    record.driverParam = params.driverParam;
    for (int cluster = 0; cluster < 3; ++cluster) {
        record.clusterLevels[cluster] = resource.staticData().clusterLevel(cluster);
    }
    if (params.queryMaxEfficientFreq) {
        for (int cluster = 0; cluster < 3; ++cluster) {
            record.maxEfficientFreqs[cluster] =
                    VELKSettingsProvider::getMaxEfficientCPUFreqProvider(cluster);
        }
    }
    record.tuningParam1 = params.tuningParam1 > 0 ? params.tuningParam1 : kDefaultTuningParam1;
    record.tuningParam2 = params.tuningParam2 > 0 ? params.tuningParam2 : kDefaultTuningParam2;
    return record;
}

[[gnu::cold]] void applyDefaultControls(const VELKRescManagement& resource) {
    VELKSingleShotControl levels;
    for (int cluster = 0; cluster < 3; ++cluster) {
        levels.rangeLevels1.push_back(resource.staticData().clusterDefaultLevel(cluster));
    }
    VELKMachine::notifySingleShotControl(levels);

    if (resource.initParams().applyExtraDefaultControl) {
        VELKSingleShotControl extra;
        extra.extraValues[0] = 1;
        VELKMachine::notifySingleShotControl(extra);
    }
}

}  // namespace

[[gnu::cold]] int VELKMachine::init(const VELKInitParams& params) {
    if (!isVELKEnabled()) {
        VELK_LOGW_GATED("VELK is not supported!");
        return kFailure;
    }
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    const TraceSection section("VELK::init");
    if (gResource != nullptr) {
        VELK_LOGI("gResource already exists");
        ++gUseCount;
        return kSuccess;
    }

    publishResource(VELKRescManagement::createInstance(params));
    // Undoes the creation when a later step throws.
    const uint32_t usersBefore = gUseCount;
    Rollback undoCreation([usersBefore]() VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
        gUseCount = usersBefore;
        destroyResource();
    });
    VELK_LOGI("velk created");
    if (gResource == nullptr) {
        VELK_LOGE("init", "VELK init fail");
        return kFailure;
    }

    ++gUseCount;
    const bool sent = sendIOCtl<VELK_IOC_INIT>(gResource->deviceFd(), buildInitRecord(*gResource));
    VELK_LOGI("[%s] init done", "init");
    applyDefaultControls(*gResource);
    undoCreation.dismiss();
    return resultOf(sent);
}

[[gnu::cold]] int VELKMachine::uninit() {
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    closeTemporaryDevice();
    if (gUseCount == 0) {
        return kFailure;
    }
    const uint32_t users = --gUseCount;
    const bool isLast = users == 0 && gResource != nullptr;
    std::optional<TraceSection> section;

    // The last call completes the teardown on every way out, also when logging or tracing throws.
    bool isUninitSent = false;
    const auto sendUninit = [&isUninitSent]() VELK_NO_THREAD_SAFETY_ANALYSIS {
        isUninitSent = true;
        return sendAnnounced<VELK_IOC_UNINIT>(gResource->deviceFd(), VELK_UNINIT_PARAM{});
    };
    Rollback teardown([&]() VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
        if (!isUninitSent) {
            try {
                sendUninit();
            } catch (...) {
                // The caller gets the exception that made the operation leave, not this one.
            }
        }
        destroyResource();
        closeWhenUnused(gDeviceFd.exchange(kNotOpened));
    });
    if (!isLast) {
        teardown.dismiss();
    }

    section.emplace("VELK::uninit");
    VELK_LOGI("[%s] velk uninit, usecount: %d", "uninit", static_cast<int>(users));
    if (!isLast) {
        return kSuccess;
    }
    announceCommand(VELK_IOC_UNINIT);
    return resultOf(sendUninit());
}

// --- Tasks ---------------------------------------------------------------------------------------

namespace {

// The target time as it is sent and logged: positive values are raised to the driver's smallest.
int32_t adjustedTargetTime(int32_t targetTime) {
    return targetTime > 0 ? std::max(targetTime, VELK_MIN_TARGET_TIME) : targetTime;
}

bool isTaskValid(VELKRescManagement& resource, const int& task) {
    VELKJsonConvertor* const convertor = resource.staticData().convertorOf(task);
    const int32_t targetTime =
            convertor != nullptr ? convertor->getTaskTargetTime(task) : kUnknownTargetTime;
    const int32_t defaultUclamp =
            convertor != nullptr ? convertor->getTaskDefaultUclamp(task) : kUnknownDefaultUclamp;
    if (targetTime > 0 && defaultUclamp > 0) {
        return true;
    }
    VELK_LOGD("task: %d invalid, target time: %d, defaultuclamp: %d", task,
              adjustedTargetTime(targetTime), defaultUclamp);
    return false;
}

void eraseFirst(std::string& text, std::string_view part) {
    if (const size_t position = text.find(part); position != std::string::npos) {
        text.erase(position, part.size());
    }
}

std::string shortTaskName(const VELKRescManagement& resource, int task) {
    std::string name = resource.staticData().nameOf(task);
    eraseFirst(name, "TASK_");
    eraseFirst(name, "CUSTOM_");
    return name.substr(0, kMaxShortName);
}

// Registers a new task with the driver. A refused registration is kept and sent again later.
[[gnu::noinline, gnu::cold]] void registerTask(VELKRescManagement& resource, int task,
                                               unsigned uniqueTaskId,
                                               const VELKTaskExtraParams& extra) {
    const std::string name = shortTaskName(resource, task);
    const int32_t targetTime = adjustedTargetTime(resource.staticData().targetTimeOf(task));
    const bool isVIPTask = resource.staticData().isVIPTask(task);
    VELK_LOGI("new task: %d (%d) taskTargetTime: %d, isVIPTask: %d", task,
              static_cast<int>(uniqueTaskId), targetTime, isVIPTask);
    VELK_LOGI("curTask uniqueId: %d (task enum: %d => %s), group head uniqueId: %d",
              static_cast<int>(uniqueTaskId), task, name.c_str(), 0);

    VELK_TASK_INIT_PARAM record{};
    record.uniqueTaskId = uniqueTaskId;
    record.defaultUclamp = resource.staticData().defaultUclampOf(task);
    record.targetTime = targetTime;
    record.taskSpecValue = resource.staticData().specValueOf(task);
    record.isVIPTask = isVIPTask;
    record.extraFlag0 = extra.extraFlag0;
    record.extraFlag1 = extra.extraFlag1;
    std::copy_n(name.c_str(), std::char_traits<char>::length(name.c_str()), record.taskName);
    if (!sendIOCtl<VELK_IOC_TASK_INIT>(resource.deviceFd(), record)) {
        resource.refusedRegistrations().add(uniqueTaskId, record);
    }
}

// Sends a refused registration again, and drops it when the driver takes it.
[[gnu::noinline, gnu::cold]] void replayRegistration(VELKRescManagement& resource,
                                                     unsigned uniqueTaskId) {
    VELK_TASK_INIT_PARAM record{};
    if (resource.refusedRegistrations().find(uniqueTaskId, record) &&
        sendIOCtl<VELK_IOC_TASK_INIT>(resource.deviceFd(), record)) {
        resource.refusedRegistrations().remove(uniqueTaskId);
    }
}

}  // namespace

int VELKMachine::notifyTaskStart(const void* key, int task, const VELKTaskExtraParams& extra) {
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    if (gResource == nullptr) {
        return failCheckInit();
    }
    VELKRescManagement& resource = *gResource;
    if (!isTaskValid(resource, task)) {
        VELK_LOGD("Task: %d is invalid", task);
        return kFailure;
    }
    const TraceSection section("VELK::notifyTaskStart");
    VELK_LOGD("[%s] notifyTaskStart", "notifyTaskStart");

    bool isFirstShowUp = false;
    VELK_TASK_PARAM record{};
    record.tid = static_cast<uint32_t>(gettid());
    record.uniqueTaskId = resource.taskIds().idOf(key, task, isFirstShowUp);
    {
        // An exception here means that the registration was neither sent nor kept. The pair is then
        // forgotten, so that its next start registers it.
        Rollback forgetPair([&]() noexcept {
            if (isFirstShowUp) {
                resource.removeUniqueTaskId(key, task);
            }
        });
        VELK_LOGD("[%s] isFirstShowUp: %d, uniqueId: %u", "notifyTaskStart", isFirstShowUp,
                  record.uniqueTaskId);
        if (isFirstShowUp) {
            registerTask(resource, task, record.uniqueTaskId, extra);
        }
        forgetPair.dismiss();
    }
    if (resource.refusedRegistrations().contains(record.uniqueTaskId)) {
        replayRegistration(resource, record.uniqueTaskId);
    }

    const bool sent = sendIOCtl<VELK_IOC_TASK_START>(resource.deviceFd(), record);
    resource.taskThreads().start(task, record.uniqueTaskId, record.tid);
    return resultOf(sent);
}

int VELKMachine::notifyTaskStart(const void* key, int task) {
    return notifyTaskStart(key, task, VELKTaskExtraParams{});
}

int VELKMachine::notifyTaskEnd(const void* key, int task) {
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    if (gResource == nullptr) {
        return failCheckInit();
    }
    VELKRescManagement& resource = *gResource;
    if (!isTaskValid(resource, task)) {
        VELK_LOGD("Task: %d is not valid", task);
        return kFailure;
    }
    const TraceSection section("VELK::notifyTaskEnd");
    VELK_LOGD("[%s] notifyTaskEnd", "notifyTaskEnd");

    bool isFirstShowUp = false;
    VELK_TASK_PARAM record{};
    record.tid = static_cast<uint32_t>(gettid());
    record.uniqueTaskId = resource.taskIds().idOf(key, task, isFirstShowUp);
    if (isFirstShowUp) {
        // The look-up has just made an id for a pair that never started.
        const Rollback forgetPair([&]() noexcept { resource.removeUniqueTaskId(key, task); });
        VELK_LOGW("notifyTaskEnd should not called before notifyTaskStart,curTask: %d", task);
        return kFailure;
    }

    const bool sent = sendIOCtl<VELK_IOC_TASK_END>(resource.deviceFd(), record);
    resource.taskThreads().end(task, record.uniqueTaskId);
    return resultOf(sent);
}

int VELKMachine::notifyTaskSceneChange(int task, VELKSceneChangeMode mode) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failCheckInit();
    }
    const TraceSection section("VELK::notifyTaskSceneChange");

    VELK_TASK_PARAM record{};
    record.tid = static_cast<uint32_t>(gettid());
    record.uniqueTaskId = resource->taskThreads().activeIdOf(task, record.tid);
    VELK_LOGI("[%s] notifyTaskSceneChange, taskId: %d", "notifyTaskSceneChange",
              static_cast<int>(record.uniqueTaskId));
    if (record.uniqueTaskId == 0) {
        VELK_LOGE("notifyTaskSceneChange", "error taskid, need to check");
        return kFailure;
    }
    record.sceneChangeMode = static_cast<uint32_t>(mode);
    return resultOf(sendIOCtl<VELK_IOC_SCENE_CHANGE>(resource->deviceFd(), record));
}

// --- Single-shot controls ------------------------------------------------------------------------

namespace {

// Adds the critical tasks to the record, by the unique task ids that exist for them.
void addCriticalTasks(VELK_SINGLE_SHOT_PARAM& record, VELKRescManagement& resource,
                      const ActiveSingleShots::CriticalTasks& criticalTasks) {
    std::vector<unsigned> ids;
    std::vector<uint32_t> uclamps;
    for (const auto& [task, uclamp] : criticalTasks) {
        resource.getUniqueTaskIdsFromTask(task, ids);
        uclamps.resize(ids.size(), static_cast<uint32_t>(uclamp));
    }
    setCriticalTasks(record, ids, uclamps);
}

// Makes the control active and sends the merged values. `source`: where its category was looked up;
// a control that a caller handed over has none, and may become its category's default.
int activateControl(VELKRescManagement& resource, const VELKSingleShotControl& control,
                    ControlSource source) {
    VELK_LOGD("VELK::notifySingleShotControl:%d", control.category);
    const TraceSection section("VELK::notifySingleShotControl");
    if (!isValidSingleShotControl(control)) {
        VELK_LOGE("notifySingleShotControl", "Not valid single shot control");
        return kFailure;
    }

    ActiveSingleShots& active = resource.activeSingleShots();
    SingleShotSettings& settings = resource.singleShotSettings();
    uint64_t serial = 0;
    bool isAdded = false;
    bool isCounted = false;
    if (control.category == kHandedOverCategory) {
        ActiveSingleShots::DetachedEntry entry;
        entry.emplace_back(control);
        serial = active.push(std::move(entry));
    } else if (source == ControlSource::Default ||
               (source == ControlSource::None &&
                !SingleShotSettings::isInSettings(control.category))) {
        settings.addDefault(control);
        isCounted = true;
    }
    // When an exception leaves the operation, the control must not stay active.
    Rollback takeBack([&]() noexcept {
        active.takeBack(control, serial, isAdded);
        if (isCounted) {
            settings.takeBackDefault(control.category);
        }
    });
    active.add(control);
    isAdded = true;

    VELK_SINGLE_SHOT_PARAM record{};
    const auto criticalTasks = active.fillMergedRecord(record, control, control.isReset);
    if (!criticalTasks.empty()) {
        addCriticalTasks(record, resource, criticalTasks);
    }
    const bool sent = sendIOCtl<VELK_IOC_SINGLE_SHOT>(resource.deviceFd(), record);
    takeBack.dismiss();
    return resultOf(sent);
}

}  // namespace

int VELKMachine::notifySingleShotControl(const VELKSingleShotControl& control) {
    const ResourceUse use(gPublishedResource);
    if (use.object() == nullptr) {
        return failCheckInit();
    }
    return activateControl(*use.object(), control, ControlSource::None);
}

int VELKMachine::notifySingleShotControl(int category) {
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    if (gResource == nullptr) {
        return failNoInit();
    }
    VELKSingleShotControl control;
    const ControlSource source = gResource->singleShotSettings().find(category, control);
    if (source == ControlSource::None) {
        VELK_LOGE("notifySingleShotControl", "Single shot setting of %d not found", category);
        return kFailure;
    }
    control.category = category;
    return activateControl(*gResource, control, source);
}

namespace {

// The control to reset: for category 0 the newest one, popped off the stack, else a copy of the
// category's. Empty when there is none.
ActiveSingleShots::DetachedEntry takeControlToReset(VELKRescManagement& resource, int category) {
    if (category == kHandedOverCategory) {
        return resource.activeSingleShots().pop();
    }
    ActiveSingleShots::DetachedEntry entry;
    entry.emplace_back(VELKSingleShotControl{});
    if (!resource.getSingleShotSetting(category, entry.front().control)) {
        VELK_LOGE("notifyResetSingleShotControl", "Single shot setting of %d not found", category);
        entry.clear();
    }
    return entry;
}

}  // namespace

int VELKMachine::notifyResetSingleShotControl(int category) {
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    if (gResource == nullptr) {
        return failNoInit();
    }
    VELKRescManagement& resource = *gResource;
    VELK_LOGD("VELK::notifyResetSingleShotControl:%d", category);
    const TraceSection section("VELK::notifyResetSingleShotControl");

    ActiveSingleShots::DetachedEntry taken = takeControlToReset(resource, category);
    if (taken.empty()) {
        return kFailure;
    }
    ActiveSingleShots& active = resource.activeSingleShots();
    const VELKSingleShotControl& control = taken.front().control;
    // One that was handed over was valid then.
    if (category != kHandedOverCategory && !isValidSingleShotControl(control)) {
        VELK_LOGE("notifyResetSingleShotControl", "Not valid single shot control");
        return kFailure;
    }
    // When an exception leaves the operation, the control is active as before and can be reset
    // again.
    Rollback putBack([&]() noexcept {
        if (category == kHandedOverCategory) {
            active.putBack(std::move(taken));
        }
    });
    const WithdrawnCounts withdrawn = active.withdraw(control);
    Rollback reactivate([&]() noexcept { active.undoWithdrawal(control, withdrawn); });

    VELK_SINGLE_SHOT_PARAM record{};
    const auto criticalTasks = active.fillMergedRecord(record, control, true);
    if (!criticalTasks.empty()) {
        addCriticalTasks(record, resource, criticalTasks);
    }
    record.isReset = 1;
    if (control.requestValue != -1) {
        record.requestValue = VELK_REQUEST_RELEASED;
    }
    const bool sent = sendIOCtl<VELK_IOC_SINGLE_SHOT>(resource.deviceFd(), record);
    reactivate.dismiss();
    putBack.dismiss();
    return resultOf(sent);
}

int VELKMachine::notifyResetSingleShotControl() {
    return notifyResetSingleShotControl(kHandedOverCategory);
}

// --- Critical tasks ------------------------------------------------------------------------------

namespace {

// Marks while the library is down: sends the settings' control without merging it. Empty when the
// library is up. The caller may then wait for the global mutex, because this function is no longer
// inside: an uninit that waits for the calls inside holds that mutex.
[[gnu::cold]] std::optional<int> markWithoutResource(int user) {
    const ResourceUse use(gPublishedResource);
    if (use.object() != nullptr) {
        return std::nullopt;
    }
    VELK_LOGD_GATED("no VELKResource exists, create temp devfd");
    VELK_SINGLE_SHOT_PARAM record{};
    const auto controls = VELKSettingsProvider::getSingleShotControlProvider();
    const auto settings = controls.find(user);
    if (settings == controls.end()) {
        return kSuccess;
    }
    const auto setting = settings->second.find(VELK_SCENARIO_FALLBACK);
    if (setting == settings->second.end()) {
        return kSuccess;
    }
    int32_t fd = kNotOpened;
    if (!openTemporaryDevice(fd)) {
        return kFailure;
    }
    setSingleShotParam(record, setting->second);
    return resultOf(sendIOCtl<VELK_IOC_SINGLE_SHOT>(fd, record));
}

// Whether the tuning data knows the task of a critical span.
inline bool isCriticalTaskKnown(const VELKRescManagement& resource, int task) {
    if (resource.staticData().defaultUclampOf(task) > 0) {
        return true;
    }
    VELK_LOGD_GATED("task: %d invalid", task);
    return false;
}

}  // namespace

int VELKMachine::markCriticalTask(int user) {
    if (!isVELKEnabled()) {
        VELK_LOGW_GATED("VELK is not supported!");
        return kFailure;
    }
    const TraceSection section("VELK::markCriticalTask");
    if (const std::optional<int> result = markWithoutResource(user)) {
        return *result;
    }
    return notifySingleShotControl(user);
}

int VELKMachine::markCriticalTask() {
    return markCriticalTask(kDefaultUser);
}

[[gnu::cold]] int VELKMachine::unsetCriticalTask() {
    const TraceSection section("VELK::unsetCriticalTask");
    const std::lock_guard<InheritingMutex> lock(gGlobalMutex);
    const VELKSingleShotControl control;
    if (gResource != nullptr) {
        return notifySingleShotControl(control);
    }
    VELK_SINGLE_SHOT_PARAM record{};
    int32_t fd = kNotOpened;
    if (!openTemporaryDevice(fd)) {
        return kFailure;
    }
    setSingleShotParam(record, control);
    return resultOf(sendIOCtl<VELK_IOC_SINGLE_SHOT>(fd, record));
}

int VELKMachine::notifySingleShotCriticalTaskStart(int task) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failCheckInitGated();
    }
    const TraceSection section("VELK::notifySingleShotCriticalTaskStart");
    if (!isCriticalTaskKnown(*resource, task)) {
        return kFailure;
    }
    VELK_LOGD_GATED("[%s] notifySingleShotCriticalTaskStart", "notifySingleShotCriticalTaskStart");
    VELK_CRITICAL_TASK_PARAM record{};
    record.tid = gettid();
    record.criticalValue = resource->activeSingleShots().criticalValueOf(task);
    return resultOf(sendIOCtl<VELK_IOC_CRITICAL_START>(resource->deviceFd(), record));
}

int VELKMachine::notifySingleShotCriticalTaskEnd(int task) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failCheckInitGated();
    }
    const TraceSection section("VELK::notifySingleShotCriticalTaskEnd");
    if (!isCriticalTaskKnown(*resource, task)) {
        return kFailure;
    }
    VELK_LOGD_GATED("[%s] notifySingleShotCriticalTaskEnd", "notifySingleShotCriticalTaskEnd");
    VELK_CRITICAL_TASK_PARAM record{};
    record.tid = gettid();
    return resultOf(sendIOCtl<VELK_IOC_CRITICAL_END>(resource->deviceFd(), record));
}

// --- Anchor points -------------------------------------------------------------------------------

int VELKMachine::notifyAnchorPointStart(int anchor, unsigned int serial) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failCheckInitGated();
    }
    const auto targets = resource->anchors().validate(anchor);
    if (!targets) {
        return kFailure;
    }
    const TraceSection section("VELK::notifyAnchorPointStart");
    VELK_ANCHOR_PARAM record{};
    record.anchor = anchor;
    record.phase = VELK_ANCHOR_START;
    record.serial = serial;
    // The overriding properties are read again: they may have changed since the validation.
    record.latencyTarget = AnchorTable::latencyInForce(anchor, *targets);
    record.jitterTarget = AnchorTable::jitterInForce(anchor, *targets);
    return resultOf(sendIOCtl<VELK_IOC_ANCHOR>(resource->deviceFd(), record));
}

int VELKMachine::notifyAnchorPointEnd(int anchor, unsigned int serial) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failCheckInitGated();
    }
    const auto targets = resource->anchors().find(anchor);
    if (!targets) {
        return kFailure;
    }
    const TraceSection section("VELK::notifyAnchorPointEnd");
    VELK_ANCHOR_PARAM record{};
    record.anchor = anchor;
    record.phase = VELK_ANCHOR_END;
    record.serial = serial;
    record.jitterTarget = AnchorTable::jitterInForce(anchor, *targets);
    return resultOf(sendIOCtl<VELK_IOC_ANCHOR>(resource->deviceFd(), record));
}

// --- Frame information ---------------------------------------------------------------------------

namespace {

// Truncates toward zero and limits the result to the unsigned 32-bit range. NaN becomes 0.
uint32_t wholeFps(float fps) {
    constexpr float kBeyondRange = 4294967296.0F;
    if (!(fps > 0)) {
        return 0;
    }
    return fps < kBeyondRange ? static_cast<uint32_t>(fps) : std::numeric_limits<uint32_t>::max();
}

}  // namespace

int VELKInfoNotifier::notifyVSync() {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failNoInitGated();
    }
    const TraceSection section("VELK::notifyVSync");
    return resultOf(sendIOCtl<VELK_IOC_VSYNC>(resource->deviceFd(), VELK_VSYNC_PARAM{}));
}

int VELKInfoNotifier::notifyCamFps(float fps) {
    const ResourceUse use(gPublishedResource);
    VELKRescManagement* const resource = use.object();
    if (resource == nullptr) {
        return failNoInitGated();
    }
    const TraceSection section("VELK::notifyCamFps");
    VELK_LOGD_GATED("get fps: %f", static_cast<double>(fps));
    VELK_CAM_FPS_PARAM record{};
    record.fps = wholeFps(fps);
    return resultOf(sendIOCtl<VELK_IOC_CAM_FPS>(resource->deviceFd(), record));
}
