#include "foundation/CommandChannel.h"

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "foundation/LogGate.h"

constinit std::atomic<int32_t> gDeviceFd = kNotOpened;

bool openVELKDevice(int32_t& descriptor) {
    if (descriptor == kNotOpened) {
        descriptor = open(VELK_NODE_PATH, O_RDONLY);
        if (descriptor >= 0) {
            return true;
        }
        if (errno == ENOENT) {
            descriptor = kNodeAbsent;
            return true;
        }
    } else if (descriptor != kNodeAbsent) {
        return true;
    }
    VELK_LOGW("[%s] Can't open %s: %s", "openVELKDevice", VELK_NODE_PATH, strerror(errno));
    return false;
}

bool checkIOctlValid(int fd) {
    if (fd >= 0) {
        return true;
    }
    VELK_LOGW("[%s] Can't open %s: %s", "checkIOctlValid", VELK_NODE_PATH, strerror(errno));
    return false;
}

bool sendRecord(int fd, uint32_t request, const void* record) {
    VELK_LOGD_GATED("send ioctl command: %d", static_cast<int>(request));
    if (!checkIOctlValid(fd)) {
        VELK_LOGW("ioctl invalid");
        return false;
    }
    const int result = ioctl(fd, request, record);
    if (result == 0) {
        return true;
    }
    VELK_LOGD("[%s] ioctlRet:%d, errno: %s", "sendIOCtl", result, strerror(errno));
    return false;
}
