/*
 * A call of a live program, as it is sent to velk-run.
 */
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/DriverEvent.h"
#include "live/Frame.h"
#include "play/PlayedCall.h"

namespace desk {

// A command with its number: 1, 2, 3, ... in the order in which the driver received the
// commands.
struct NumberedCommand {
    uint64_t sequence = 0;
    int64_t timeNs = 0;
    ReceivedCommand received;
};

struct LiveCall {
    uint32_t thread = 0;  // 0, 1, 2, ...; the number of a thread that has ended is used again
    std::string threadName;
    uint32_t tid = 0;   // the kernel's id of the thread
    int64_t endNs = 0;  // since the first call of the process
    int32_t result = 0;
    std::string line;  // operation and arguments as a session's line; empty for a command outside
                       // of calls
    std::string problem;
    std::vector<NumberedCommand> commands;
    std::vector<TraceEvent> sections;  // of any thread, not sent before
};

// A command as it is stored in a frame.
void putCommand(FrameWriter& frame, const DriverEvent& event);
// `commands` are so many that putCommand has written.
void putCall(FrameWriter& frame, const LiveCall& call, uint32_t commandCount,
             std::string_view commands);

// Throws std::runtime_error.
LiveCall readCall(std::string_view content);

}  // namespace desk
