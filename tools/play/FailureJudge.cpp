#include "play/FailureJudge.h"

namespace desk {

bool FailureJudge::isFailureAsTold(std::span<const ReceivedCommand> commands) {
    bool isRefusedAsTold = false;
    for (const ReceivedCommand& command : commands) {
        const bool isAsTold = command.verdict == Verdict::RefusedAsTold;
        isRefusedAsTold = isRefusedAsTold || isAsTold;
        if (command.call == DriverCall::Open) {
            mIsNodeDenied = isAsTold;
            mOpenDescriptors += isRefusal(command.verdict) ? 0U : 1U;
        } else if (command.call == DriverCall::Close && !isRefusal(command.verdict)) {
            --mOpenDescriptors;
        }
    }
    return isRefusedAsTold || (mIsNodeDenied && mOpenDescriptors == 0);
}

}  // namespace desk
