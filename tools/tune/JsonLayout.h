/*
 * JSON as people write tuning files.
 */
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace desk {

// Objects and arrays that hold no others stand on one line, all others have a line for each member
// or element, four blanks further in.
std::string layOut(const nlohmann::ordered_json& json);

}  // namespace desk
