/*
 * What two replays have different: at the driver, or in how long things took.
 */
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace desk {

// Compares one session under two tunings, both given as results of a DriverView. Returns tables as
// text, empty when nothing changes.
std::string differencesAtDriver(const nlohmann::ordered_json& a, const nlohmann::ordered_json& b);

// Compares two sessions under one tuning, both given as results of a DriverView: times, boosts and
// counts of both, and each change relative to the spread.
std::string changesBetween(const nlohmann::ordered_json& a, const nlohmann::ordered_json& b);

}  // namespace desk
