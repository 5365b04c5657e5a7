#include "play/FailureJudge.h"

namespace desk {

bool FailureJudge::isFailureAsTold(const Operation& operation,
                                   std::span<const ReceivedCommand> commands) {
    bool isRefusedAsTold = false;
    bool isOpenDenied = false;
    for (const ReceivedCommand& command : commands) {
        const bool isAsTold = command.verdict == Verdict::RefusedAsTold;
        isRefusedAsTold = isRefusedAsTold || isAsTold;
        if (command.call == DriverCall::Open) {
            mIsNodeDenied = isOpenDenied = isAsTold;
            mOpenDescriptors += isRefusal(command.verdict) ? 0U : 1U;
        } else if (command.call == DriverCall::Close && !isRefusal(command.verdict)) {
            --mOpenDescriptors;
        }
    }
    if (std::holds_alternative<InitCall>(operation)) {
        mIsInitDenied = isOpenDenied;
    }
    return isRefusedAsTold || mIsInitDenied || (mIsNodeDenied && mOpenDescriptors == 0);
}

}  // namespace desk
