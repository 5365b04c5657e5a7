/*
 * One call to the control node as the driver model received it, and the interface of its observers.
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
    Accepted,         // carried out
    Noted,            // carried out, although it is unusual
    InjectedRefusal,  // refused by an injected fault
    Refused,          // refused because the call is wrong
};

constexpr bool isRefusal(Verdict verdict) {
    return verdict == Verdict::InjectedRefusal || verdict == Verdict::Refused;
}

struct DriverEvent {
    DriverCall call = DriverCall::Command;
    Verdict verdict = Verdict::Accepted;
    uint64_t sequence = 0;  // 1, 2, 3, ... in the order in which the model received the calls
    int64_t timeNs = 0;     // of the desk's clock
    uint32_t tid = 0;       // the calling thread
    int descriptor = -1;    // -1 for an open that was refused

    // Of a command only.
    uint32_t request = 0;
    const VELKCommand* command = nullptr;  // null when no command has the request
    const void* record = nullptr;          // valid during the notification alone
    size_t recordSize = 0;                 // 0 when no command has the request

    // What the active controls ask for after the command. Empty for a command that cannot change
    // them.
    std::optional<MergedControl> control;

    int error = 0;        // the caller's errno when refused, else 0
    std::string finding;  // what is unusual or wrong, else empty
};

/*
 * Is notified of every call, on the calling thread and without any lock of the model. So two
 * threads may notify at once and out of order: `sequence` gives the order.
 */
class DriverObserver {
  public:
    virtual ~DriverObserver() = default;
    virtual void onDriverEvent(const DriverEvent& event) noexcept = 0;
};

}  // namespace desk
