/*
 * The way to the driver: opening the control node, and sending one command record.
 *
 * A control-node descriptor is kNotOpened until the first attempt, kNodeAbsent when that attempt
 * found no node, and 0 or more when open.
 */
#pragma once

#include <sys/ioctl.h>

#include <atomic>
#include <cstdint>

#include "foundation/CommandTable.h"
#include "foundation/RuntimeSwitches.h"
#include "foundation/Visibility.h"

inline constexpr int32_t kNotOpened = -1;
inline constexpr int32_t kNodeAbsent = -2;

// The descriptor for commands that are sent while the library is down.
VELK_INTERNAL extern std::atomic<int32_t> gDeviceFd;

// Opens the node unless the descriptor is open already. False when it cannot be opened. A missing
// node counts as success once, so that the library comes up on a device without the driver; the
// descriptor is then kNodeAbsent and every send on it fails.
VELK_INTERNAL bool openVELKDevice(int32_t& descriptor);

// Warns that the descriptor cannot carry a command.
VELK_INTERNAL void reportInvalidDescriptor() __attribute__((cold));

// Whether the descriptor can carry a command; warns when not.
VELK_INTERNAL inline bool checkIOctlValid(int fd) {
    if (fd >= 0) {
        return true;
    }
    reportInvalidDescriptor();
    return false;
}

// Messages of the sender, kept out of line.
VELK_INTERNAL void logCommand(uint32_t request) __attribute__((cold));
VELK_INTERNAL bool reportInvalidCommand() __attribute__((cold));
VELK_INTERNAL bool reportRefusedCommand(int result) __attribute__((cold));

// The first step of a send: says in the debug log which command follows.
VELK_INTERNAL inline void announceCommand(uint32_t request) {
    if (isDebugLogEnabled()) {
        logCommand(request);
    }
}

// The other steps: true when the driver took the record.
template <uint32_t Request, typename Record>
VELK_INTERNAL inline bool sendAnnounced(int fd, const Record& record) {
    static_assert(isWireRecord<Record> && _IOC_SIZE(Request) == sizeof(Record));
    if (!checkIOctlValid(fd)) {
        return reportInvalidCommand();
    }
    const int result = ioctl(fd, Request, &record);
    return result == 0 || reportRefusedCommand(result);
}

// Sends the record of a command as it stands; true when the driver took it. Never retries.
template <uint32_t Request, typename Record>
VELK_INTERNAL inline bool sendIOCtl(int fd, const Record& record) {
    announceCommand(Request);
    return sendAnnounced<Request>(fd, record);
}
