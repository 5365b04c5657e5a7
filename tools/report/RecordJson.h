/*
 * A command's record as JSON.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "driver/RecordDecoder.h"

namespace desk {

// All fields but the reserved ones by name, in the order of the record.
nlohmann::ordered_json recordToJson(const VELKCommand& command, const void* record);

}  // namespace desk
