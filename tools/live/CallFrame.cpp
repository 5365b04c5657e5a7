#include "live/CallFrame.h"

#include <algorithm>

namespace desk {

namespace {

NumberedCommand getCommand(FrameReader& reader) {
    NumberedCommand command;
    command.sequence = reader.get<uint64_t>();
    command.timeNs = reader.get<int64_t>();
    ReceivedCommand& received = command.received;
    received.call = reader.get<DriverCall>();
    received.verdict = reader.get<Verdict>();
    received.tid = reader.get<uint32_t>();
    received.request = reader.get<uint32_t>();
    received.error = reader.get<int>();
    received.finding = reader.getText();
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
    frame.put(event.sequence);
    frame.put(event.timeNs);
    frame.put(event.call);
    frame.put(event.verdict);
    frame.put(event.tid);
    frame.put(event.request);
    frame.put(event.error);
    frame.putText(event.finding);
    const bool hasRecord = event.record != nullptr && event.command != nullptr;
    frame.putText({static_cast<const char*>(event.record), hasRecord ? event.recordSize : 0});
}

void putCall(FrameWriter& frame, const LiveCall& call, uint32_t commandCount,
             std::string_view commands) {
    frame.put(call.thread);
    frame.putText(call.threadName);
    frame.put(call.tid);
    frame.put(call.startNs);
    frame.put(call.endNs);
    frame.put(call.result);
    frame.putText(call.line);
    frame.putText(call.problem);
    frame.put(commandCount);
    frame.append(commands);
    frame.put(static_cast<uint32_t>(call.sections.size()));
    for (const TraceEvent& section : call.sections) {
        frame.put(section);
    }
}

LiveCall readCall(std::string_view content) {
    FrameReader reader(content);
    LiveCall call;
    call.thread = reader.get<uint32_t>();
    call.threadName = reader.getText();
    call.tid = reader.get<uint32_t>();
    call.startNs = reader.get<int64_t>();
    call.endNs = reader.get<int64_t>();
    call.result = reader.get<int32_t>();
    call.line = reader.getText();
    call.problem = reader.getText();
    for (auto left = reader.get<uint32_t>(); left > 0; --left) {
        call.commands.push_back(getCommand(reader));
    }
    for (auto left = reader.get<uint32_t>(); left > 0; --left) {
        call.sections.push_back(reader.get<TraceEvent>());
    }
    return call;
}

}  // namespace desk
