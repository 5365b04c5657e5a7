#include "foundation/CommandChannel.h"

#include <fcntl.h>

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

void reportInvalidDescriptor() {
    VELK_LOGW("[%s] Can't open %s: %s", "checkIOctlValid", VELK_NODE_PATH, strerror(errno));
}

void logCommand(uint32_t request) {
    VELK_LOGD("send ioctl command: %d", static_cast<int>(request));
}

bool reportInvalidCommand() {
    VELK_LOGW("ioctl invalid");
    return false;
}

bool reportRefusedCommand(int result) {
    VELK_LOGD("[%s] ioctlRet:%d, errno: %s", "sendIOCtl", result, strerror(errno));
    return false;
}
