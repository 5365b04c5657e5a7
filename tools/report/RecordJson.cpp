#include "report/RecordJson.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "session/SessionLine.h"

namespace desk {

using nlohmann::ordered_json;

ordered_json recordToJson(const VELKCommand& command, const void* record) {
    ordered_json fields = ordered_json::object();
    visitRecord(command, record, [&fields](const FieldValue& field) {
        if (field.isReserved()) {
            return;
        }
        ordered_json& value = fields[std::string(field.name())];
        if (field.isText()) {
            value = field.text();
        } else if (field.isArray()) {
            value = ordered_json::array();
            for (size_t i = 0; i < field.size(); ++i) {
                value.push_back(field.number(i));
            }
        } else {
            value = field.number();
        }
    });
    return fields;
}

RecordBytes recordToPrint(const PlayedCall& played, const ReceivedCommand& command) {
    RecordBytes record = command.record;
    for (const VELKField& field : command.command->fields) {
        uint32_t tid = 0;
        if (std::string_view(field.name) == "tid") {
            std::memcpy(&tid, record.data() + field.offset, sizeof tid);
        }
        if (tid != 0 && tid == command.tid) {
            tid = played.call->thread + 1;
            std::memcpy(record.data() + field.offset, &tid, sizeof tid);
        }
    }
    return record;
}

ordered_json argumentsToJson(const PlayedCall& played) {
    std::string line;
    appendSessionLine(line, 0, "", played.call->info->name, played.call->arguments);
    ordered_json members = ordered_json::parse(line);
    for (const char* const member : {"at_us", "thread", "call"}) {
        members.erase(member);
    }
    return members;
}

const char* commandName(const ReceivedCommand& command) {
    switch (command.call) {
        case DriverCall::Open:
            return "open";
        case DriverCall::Close:
            return "close";
        case DriverCall::Command:
            break;
    }
    return command.command != nullptr ? command.command->name : "unknown";
}

const char* errorName(int error) {
    const char* name = strerrorname_np(error);
    return name != nullptr ? name : "unknown errno";
}

}  // namespace desk
