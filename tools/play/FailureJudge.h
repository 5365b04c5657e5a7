/*
 * Tells the failures that a misbehaving driver was told to cause from all others.
 */
#pragma once

#include <cstddef>
#include <span>

#include "play/PlayedCall.h"

namespace desk {

/*
 * A call fails as told when the driver refused something of that very call because it was told to,
 * or when the node could not be opened, as told, and has not been open since: then there is nothing
 * that a call could reach.
 */
class FailureJudge {
  public:
    // Takes in what the driver received during a call. True when its failure would be as told.
    bool isFailureAsTold(std::span<const ReceivedCommand> commands);

  private:
    size_t mOpenDescriptors = 0;
    bool mIsNodeDenied = false;
};

}  // namespace desk
