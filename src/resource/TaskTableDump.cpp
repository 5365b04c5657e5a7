#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/LogGate.h"
#include "resource/VELKRescManagement.h"

namespace {

constexpr const char* kDumpPath = "/data/vendor/camera_dump/velk_task";
constexpr mode_t kDumpMode = 0700;

}  // namespace

void VELKRescManagement::dumpTaskTable() {
    std::string text = "UniqueTaskId => VELKMonitorTask\n";
    for (const auto& [id, task] : mUniqueIdToTask) {
        text.append(std::to_string(id)).append(" => ").append(taskName(task)).append("\n");
    }

    VELK_LOGI("remember to apply \"adb shell setenforce 0\" before dump");
    VELK_LOGI("save to %s", kDumpPath);
    const int fd = open(kDumpPath, O_RDWR | O_CREAT | O_TRUNC, kDumpMode);
    if (fd < 0) {
        VELK_LOGE("dumpTaskTable", "fail to open %s: %s", kDumpPath, strerror(errno));
        return;
    }
    // A debugging aid: a short write costs the reader some lines and nobody else anything.
    [[maybe_unused]] const ssize_t written = write(fd, text.data(), text.size());
    close(fd);
}
