#include "live/CallFrame.h"

#include <algorithm>

namespace desk {

namespace {

// The members that a command has in a driver's event and in a received command. `numbered` holds
// its number and time.
template <typename Frame, typename Numbered, typename Command>
void exchangeCommand(Frame& frame, Numbered& numbered, Command& command) {
    frame.exchange(numbered.sequence, numbered.timeNs, command.call, command.verdict, command.tid,
                   command.request, command.error, command.finding);
}

// All of a call but its commands.
template <typename Frame, typename Call>
void exchangeCall(Frame& frame, Call& call) {
    frame.exchange(call.thread, call.threadName, call.tid, call.endNs, call.result, call.line,
                   call.problem, call.sections);
}

NumberedCommand getCommand(FrameReader& reader) {
    NumberedCommand command;
    ReceivedCommand& received = command.received;
    exchangeCommand(reader, command, received);
    const std::string_view record = reader.getText();
    if (!record.empty()) {
        received.command = findVELKCommand(received.request);
        std::ranges::transform(record.substr(0, received.record.size()), received.record.begin(),
                               [](char byte) { return static_cast<std::byte>(byte); });
    }
    return command;
}

}  // namespace

void putCommand(FrameWriter& frame, const DriverEvent& event) {
    exchangeCommand(frame, event, event);
    const bool hasRecord = event.record != nullptr && event.command != nullptr;
    frame.putText({static_cast<const char*>(event.record), hasRecord ? event.recordSize : 0});
}

void putCall(FrameWriter& frame, const LiveCall& call, uint32_t commandCount,
             std::string_view commands) {
    exchangeCall(frame, call);
    frame.put(commandCount);
    frame.append(commands);
}

LiveCall readCall(std::string_view content) {
    FrameReader reader(content);
    LiveCall call;
    exchangeCall(reader, call);
    for (auto left = reader.get<uint32_t>(); left > 0; --left) {
        call.commands.push_back(getCommand(reader));
    }
    return call;
}

}  // namespace desk
