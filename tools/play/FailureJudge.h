/*
 * Tells which calls failed because of injected faults.
 */
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "play/PlayedCall.h"

namespace desk {

/*
 * A call's failure is injected when an injected fault made the driver refuse one of its commands,
 * and also when it follows from an injected failure to open the node: until the node is open every
 * command fails, and when `init` could not open it the library is down.
 */
class FailureJudge {
  public:
    // Takes note of what the driver received during a call of that name. True when the call, if it
    // failed, failed because of an injected fault.
    bool isFailureInjected(std::string_view call, std::span<const ReceivedCommand> commands);

  private:
    size_t mOpenDescriptors = 0;
    bool mIsNodeDenied = false;
    bool mIsInitDenied = false;
};

}  // namespace desk
