/*
 * Parses the text of a whole JSON file, stricter than the parser alone: a key may appear once in
 * its object.
 */
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace desk {

// Throws JsonFault; the problem of a syntax error names line and column.
nlohmann::json parseJsonText(std::string_view text);

}  // namespace desk
