/*
 * Gathers what the driver receives during one call.
 */
#pragma once

#include <span>
#include <vector>

#include "driver/DriverEvent.h"
#include "play/PlayedCall.h"

namespace desk {

// For calls that are made one at a time.
class CommandCollector : public DriverObserver {
  public:
    void onDriverEvent(const DriverEvent& event) noexcept override;

    void clear() { mUsed = 0; }
    std::span<const ReceivedCommand> commands() const { return {mCommands.data(), mUsed}; }

  private:
    std::vector<ReceivedCommand> mCommands;  // kept from call to call
    size_t mUsed = 0;
};

}  // namespace desk
