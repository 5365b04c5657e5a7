/*
 * The outcome of one call of the session, and the interface of its listeners.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "driver/DriverEvent.h"
#include "session/SessionCall.h"
#include "trace/TraceCollector.h"

namespace desk {

// One call of the driver, with a copy of its record.
struct ReceivedCommand {
    DriverCall call = DriverCall::Command;
    Verdict verdict = Verdict::Accepted;
    uint32_t tid = 0;
    const VELKCommand* command = nullptr;  // null of an open, a close and an unknown request
    uint32_t request = 0;
    int error = 0;
    std::string finding;
    std::optional<MergedControl> control;  // in force after it, of a command that can change it
    alignas(8) std::array<std::byte, VELK_LARGEST_RECORD> record = {};
};

struct PlayedCall {
    const SessionCall* call = nullptr;
    std::string_view thread;
    int result = 0;
    bool isFailureInjected = false;  // failed because of an injected fault
    int64_t startNs = 0;             // of the session clock
    int64_t endNs = 0;
    std::span<const ReceivedCommand> commands;
    // The sections of the call; null: they are still where the desk collects them.
    const std::vector<TraceEvent>* sections = nullptr;
    std::string_view problem;  // what the library said of it as a warning or an error, if anything
};

// Notified of every call after it has returned, on the thread that made it, one call at a time.
class CallListener {
  public:
    virtual ~CallListener() = default;
    virtual void onCall(const PlayedCall& played) = 0;
    // Before the session waits, for its input or for the time of the next call.
    virtual void onWait() {}
};

}  // namespace desk
