/*
 * The schema of a session's line against the tables that lines are read by.
 */
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "session/CallTable.h"
#include "tuning/ControlTable.h"

namespace desk {
namespace {

using nlohmann::json;

json schemaOf(const std::string& name) {
    return json::parse(std::ifstream(VELK_SCHEMAS "/" + name + ".schema.json"));
}

json branchOf(const CallInfo& info) {
    const json name = {{"const", info.name}};
    json branch = {{"additionalProperties", false},
                   {"properties", {{"at_us", true}, {"thread", true}, {"call", name}}}};
    const auto add = [&branch](const ArgumentList& list, auto&& use) {
        for (const uint8_t place : list) {
            branch["properties"][kArguments.at(place).name] = true;
            use(kArguments.at(place).name);
        }
    };
    add(info.required, [&](std::string_view each) { branch["required"].push_back(each); });
    add(info.oneOf, [&](std::string_view each) {
        branch["oneOf"].push_back({{"required", {each}}});
    });
    add(info.optional, [](std::string_view /*each*/) {});
    return {{"if", {{"properties", {{"call", name}}}}}, {"then", branch}};
}

TEST(SessionSchema, HasTheCallsTheirMembersAndThoseOfAControl) {
    const json schema = schemaOf("session-line");
    json calls;
    json branches;
    for (const CallInfo& info : callTable()) {
        calls.push_back(info.name);
        branches.push_back(branchOf(info));
    }
    EXPECT_EQ(schema["properties"]["call"]["enum"], calls);
    EXPECT_EQ(schema["allOf"], branches);
    json members = json::object();
    json tuningMembers = json::object();
    for (const ControlMember& member : kControlMembers) {
        members[member.name] = true;
        if (member.isInTuning) {
            tuningMembers[member.name] = true;
        }
    }
    for (const auto& [found, expected] :
         {std::pair(schema, members), std::pair(schemaOf("settings"), tuningMembers)}) {
        json names = json::object();
        for (const auto& [name, rule] : found["$defs"]["control"]["properties"].items()) {
            names[name] = true;
        }
        EXPECT_EQ(names, expected);
    }
}

}  // namespace
}  // namespace desk
