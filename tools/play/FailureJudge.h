/*
 * Tells the failures that a misbehaving driver was told to cause from all others.
 */
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "play/PlayedCall.h"

namespace desk {

/*
 * A call fails injected when the driver refused something of that very call because it was told to.
 * What follows from a refused opening of the node is injected too: nothing can be reached until the
 * node is open, and the library is down when it was `init` that could not open it.
 */
class FailureJudge {
  public:
    // Takes in what the driver received during a call of that name. True when its failure would be
    // injected.
    bool isFailureInjected(std::string_view call, std::span<const ReceivedCommand> commands);

  private:
    size_t mOpenDescriptors = 0;
    bool mIsNodeDenied = false;
    bool mIsInitDenied = false;
};

}  // namespace desk
