/*
 * JSON in the layout of hand-written tuning files.
 */
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace desk {

// Objects and arrays without nested ones are written on one line. All others have a line for each
// member or element, indented by four blanks.
std::string layOut(const nlohmann::ordered_json& json);

}  // namespace desk
