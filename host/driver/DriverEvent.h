/*
 * One call to the control node as the driver model saw it, and who wants to hear of it.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "driver/MergedControl.h"
#include "foundation/CommandTable.h"

namespace desk {

enum class DriverCall : uint8_t { Open, Command, Close };

enum class Verdict : uint8_t {
    Accepted,         // done, and nothing to say about it
    Noted,            // done, although the model found something odd
    InjectedRefusal,  // refused because an injected fault asks for it
    Refused,          // refused because the model itself found fault
};

constexpr bool isRefusal(Verdict verdict) {
    return verdict == Verdict::InjectedRefusal || verdict == Verdict::Refused;
}

struct DriverEvent {
    DriverCall call = DriverCall::Command;
    Verdict verdict = Verdict::Accepted;
    uint64_t sequence = 0;  // 1, 2, 3, ... in the order in which the model took the calls
    int64_t timeNs = 0;     // of the desk's clock
    uint32_t tid = 0;       // the calling thread
    int descriptor = -1;    // -1 for an open that was refused

    // Of a command only.
    uint32_t request = 0;
    const VELKCommand* command = nullptr;  // null when the request is none of the table
    const void* record = nullptr;          // valid during the notification alone
    size_t recordSize = 0;                 // 0 when the request is none of the table

    // The controls in force after it, of a command that can change them.
    std::optional<MergedControl> control;

    int error = 0;        // the caller's errno when refused, else 0
    std::string finding;  // what was odd or at fault, else empty
};

/*
 * Hears of every call. It is notified on the calling thread, without any lock of the model, so two
 * threads may notify at once and out of order: `sequence` tells the order.
 */
class DriverObserver {
  public:
    virtual ~DriverObserver() = default;
    virtual void onDriverEvent(const DriverEvent& event) noexcept = 0;
};

}  // namespace desk
