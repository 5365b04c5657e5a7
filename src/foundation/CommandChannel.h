/*
 * The way to the driver: opening the control node, and sending one command record.
 *
 * A control-node descriptor is kNotOpened until the first attempt, kNodeAbsent when that attempt
 * found no node, and 0 or more when open.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "VELKTypes.h"
#include "foundation/CommandTable.h"

inline constexpr int32_t kNotOpened = -1;
inline constexpr int32_t kNodeAbsent = -2;

// The descriptor for commands that are sent while the library is down.
VELK_INTERNAL extern std::atomic<int32_t> gDeviceFd;

// Opens the node unless the descriptor is open already. False when it cannot be opened. A missing
// node counts as success once, so that the library comes up on a device without the driver; the
// descriptor is then kNodeAbsent and every send on it fails.
VELK_INTERNAL bool openVELKDevice(int32_t& descriptor);

// Whether the descriptor can carry a command; warns when not.
VELK_INTERNAL bool checkIOctlValid(int fd);

// Sends the record of a command as it stands; true when the driver took it. Never retries.
VELK_INTERNAL bool sendRecord(int fd, uint32_t request, const void* record);

template <uint32_t Request, typename Record>
bool sendIOCtl(int fd, const Record& record) {
    static_assert(isWireRecord<Record> && _IOC_SIZE(Request) == sizeof(Record));
    return sendRecord(fd, Request, &record);
}
