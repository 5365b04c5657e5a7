#include "run/DriverFollower.h"

#include "driver/DriverTotals.h"
#include "driver/RecordCheck.h"

namespace desk {

void DriverFollower::take(ReceivedCommand& received) {
    countFinding(mTotals.findings, received.finding);
    const bool isTaken = !isRefusal(received.verdict);
    switch (received.call) {
        case DriverCall::Open:
            count(mTotals.opens, received.verdict);
            mTotals.openDescriptors += isTaken ? 1U : 0U;
            break;
        case DriverCall::Close:
            count(mTotals.closes, received.verdict);
            mTotals.openDescriptors -= isTaken && mTotals.openDescriptors > 0 ? 1U : 0U;
            break;
        case DriverCall::Command:
            takeCommand(received);
            break;
    }
}

void DriverFollower::takeCommand(ReceivedCommand& received) {
    const VELKCommand* const command = findVELKCommand(received.request);
    if (command == nullptr) {
        count(mTotals.otherRequests, received.verdict);
        return;
    }
    count(mTotals.commands[static_cast<size_t>(command - VELK_COMMANDS.data())], received.verdict);
    if (received.command == nullptr) {
        return;  // without a record
    }
    const void* const record = received.record.data();
    const bool isInjected = received.verdict == Verdict::InjectedRefusal;
    if (!isRefusal(received.verdict)) {
        mSession.accept(received.request, record);
    } else if (isInjected || !findRecordFault(*command, record, received.tid).empty()) {
        mSession.refuse(received.request, record, isInjected);
    }
    if (canChangeControl(received.request)) {
        received.control = mSession.control();
    }
}

DriverSnapshot DriverFollower::snapshot() const {
    DriverSnapshot snapshot = mTotals;
    mSession.fill(snapshot);
    return snapshot;
}

}  // namespace desk
