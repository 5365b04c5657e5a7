#include "play/CommandCollector.h"

#include <algorithm>

namespace desk {

void CommandCollector::onDriverEvent(const DriverEvent& event) noexcept {
    if (mUsed == mCommands.size()) {
        mCommands.emplace_back();
    }
    ReceivedCommand& received = mCommands[mUsed++];
    received.call = event.call;
    received.verdict = event.verdict;
    received.tid = event.tid;
    received.command = event.record != nullptr ? event.command : nullptr;
    received.request = event.request;
    received.error = event.error;
    received.finding = event.finding;
    received.control = event.control;
    if (received.command != nullptr) {
        std::copy_n(static_cast<const std::byte*>(event.record), event.recordSize,
                    received.record.begin());
    }
}

}  // namespace desk
