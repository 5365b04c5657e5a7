/*
 * What two replays have different: at the driver, or in how long things took.
 */
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace desk {

// Of one session under two tunings, both results of a DriverView. Tables for people; empty when
// nothing changes.
std::string differencesAtDriver(const nlohmann::ordered_json& a, const nlohmann::ordered_json& b);

// Of two sessions under one tuning, both results of a DriverView: times, boosts and counts of both,
// and the size of each change against the spread.
std::string changesBetween(const nlohmann::ordered_json& a, const nlohmann::ordered_json& b);

}  // namespace desk
