#include "play/FailureJudge.h"

namespace desk {

bool FailureJudge::isFailureInjected(std::string_view call,
                                     std::span<const ReceivedCommand> commands) {
    bool isRefusalInjected = false;
    bool isOpenDenied = false;
    for (const ReceivedCommand& command : commands) {
        const bool isInjected = command.verdict == Verdict::InjectedRefusal;
        isRefusalInjected = isRefusalInjected || isInjected;
        if (command.call == DriverCall::Open) {
            mIsNodeDenied = isOpenDenied = isInjected;
            mOpenDescriptors += isRefusal(command.verdict) ? 0U : 1U;
        } else if (command.call == DriverCall::Close && !isRefusal(command.verdict)) {
            --mOpenDescriptors;
        }
    }
    if (call == kInitCall) {
        mIsInitDenied = isOpenDenied;
    }
    return isRefusalInjected || mIsInitDenied || (mIsNodeDenied && mOpenDescriptors == 0);
}

}  // namespace desk
