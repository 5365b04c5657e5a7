/*
 * What the driver of another process knows, from what it was seen to receive and to answer.
 */
#pragma once

#include "driver/DriverSession.h"
#include "play/PlayedCall.h"

namespace desk {

class DriverFollower {
  public:
    // To be told of all in the order in which the driver received them. Fills in the control that
    // is in force after a command that can change it.
    void take(ReceivedCommand& received);

    DriverSnapshot snapshot() const;

  private:
    void takeCommand(ReceivedCommand& received);

    DriverSession mSession;
    DriverSnapshot mTotals;  // its counters and findings; the rest is not used
};

}  // namespace desk
