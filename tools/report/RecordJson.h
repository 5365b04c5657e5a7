/*
 * The record of a command as it is printed.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "driver/RecordDecoder.h"
#include "play/PlayedCall.h"

namespace desk {

// All fields but the reserved ones by name, in the order of the record.
nlohmann::ordered_json recordToJson(const VELKCommand& command, const void* record);

using RecordBytes = decltype(ReceivedCommand::record);

// The record with the session's thread number instead of the kernel's thread id,
// which differs from run to run. Threads count from 1, in the order of first appearance.
RecordBytes recordToPrint(const PlayedCall& played, const ReceivedCommand& command);

// The name of what the driver received, as rows show it.
const char* commandName(const ReceivedCommand& command);
// "EINVAL".
const char* errorName(int error);

// The arguments of the call by name.
nlohmann::ordered_json argumentsToJson(const PlayedCall& played);

}  // namespace desk
