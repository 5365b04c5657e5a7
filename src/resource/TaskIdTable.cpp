#include "resource/TaskIdTable.h"

#include <cutils/properties.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "foundation/LogGate.h"
#include "foundation/Rollback.h"

namespace {

constexpr const char* kDumpPath = "/data/vendor/camera_dump/velk_task";
constexpr mode_t kDumpMode = 0700;

}  // namespace

[[gnu::cold]] unsigned TaskIdTable::add(const void* key, int task) {
    const uint32_t id = mNextId;
    const auto pair = mIds.emplace(TaskPair{reinterpret_cast<intptr_t>(key), task}, id);
    // When the dump throws, the caller does not get the id: then neither pair nor id may remain.
    Rollback forgetPair([this, id, position = pair.first]()
                                VELK_NO_THREAD_SAFETY_ANALYSIS noexcept {
                                    mIds.erase(position);
                                    mDumpedTasks.erase(id);
                                });
    if (property_get_bool("vendor.debug.velk.dumptasktable.enable", 0) != 0) {
        mDumpedTasks[id] = task;
        dump();
    }
    forgetPair.dismiss();
    ++mNextId;
    return id;
}

void TaskIdTable::forget(const void* key, int task) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIds.erase({reinterpret_cast<intptr_t>(key), task});
}

void TaskIdTable::dump() const {
    std::string text = "UniqueTaskId => VELKMonitorTask\n";
    for (const auto& [id, task] : mDumpedTasks) {
        text.append(std::to_string(id))
                .append(" => ")
                .append(mStaticData.nameOf(task))
                .append("\n");
    }

    VELK_LOGI("remember to apply \"adb shell setenforce 0\" before dump");
    VELK_LOGI("save to %s", kDumpPath);
    const int fd = open(kDumpPath, O_RDWR | O_CREAT | O_TRUNC, kDumpMode);
    if (fd < 0) {
        VELK_LOGE("dumpTaskTable", "fail to open %s: %s", kDumpPath, strerror(errno));
        return;
    }
    // A short write is accepted: the file is a debugging aid, and the next new id rewrites it.
    [[maybe_unused]] const ssize_t written = write(fd, text.data(), text.size());
    close(fd);
}
