/*
 * The state of the driver in another process, derived from the commands it received and its
 * answers.
 */
#pragma once

#include "driver/DriverSession.h"
#include "play/PlayedCall.h"

namespace desk {

class DriverFollower {
  public:
    // To be called for every command, in the order in which the driver received them. Fills in the
    // control that is in force after a command that can change it.
    void take(ReceivedCommand& received);

    DriverSnapshot snapshot() const;

  private:
    void takeCommand(ReceivedCommand& received);

    DriverSession mSession;
    DriverSnapshot mTotals;  // its counters and findings; the rest is not used
};

}  // namespace desk
