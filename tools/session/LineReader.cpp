#include "session/LineReader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>
#include <vector>

#include "tuning/ControlJson.h"

namespace desk {

namespace {

template <typename T>
void readArgument(const JsonValue& json, const ArgumentInfo& /*info*/, std::optional<T>& argument) {
    json.read(argument);
}

void readArgument(const JsonValue& json, const ArgumentInfo& info,
                  std::optional<std::string>& text) {
    json.read(text, TextLength{info.minLength, info.maxLength});
}

void readArgument(const JsonValue& json, const ArgumentInfo& /*info*/,
                  std::unique_ptr<const VELKSingleShotControl>& control) {
    auto read = std::make_unique<VELKSingleShotControl>();
    readControl(json, ControlRule::Recorded, *read);
    control = std::move(read);
}

// Reads the arguments of the list that are there. Returns how many.
size_t readArguments(JsonObject& object, const ArgumentList& list, bool isRequired,
                     CallArguments& arguments) {
    size_t count = 0;
    for (const size_t place : list) {
        const ArgumentInfo& info = kArguments[place];
        const auto found =
                isRequired ? std::optional(object.at(info.name)) : object.find(info.name);
        if (found) {
            ++count;
            std::visit([&](auto field) { readArgument(*found, info, arguments.*field); },
                       info.field);
        }
    }
    return count;
}

void requireOneOf(JsonObject& object, const ArgumentList& list, size_t count) {
    std::vector<std::string_view> names;
    for (const size_t place : list) {
        names.push_back(kArguments[place].name);
    }
    if (!names.empty() && count != 1) {
        object.at(names.front())
                .fail(count == 0 ? "missing" : "not alone",
                      fmt::format("one of {}", fmt::join(names, " or ")));
    }
}

void readMembers(JsonObject& object, SessionCall& call, std::string_view& thread) {
    object.require("at_us", call.atUs, 0, kMaxAtUs);
    object.require("thread", thread, TextLength{1, kMaxNameLength});
    const JsonValue operation = object.at("call");
    std::string_view name;
    if (!operation.read(name, TextLength{1, kMaxNameLength})) {
        return;
    }
    call.info = findCall(name);
    if (call.info == nullptr) {
        operation.fail(fmt::format("unknown call {}", describeText(name)), "one of " + listCalls());
        return;
    }
    readArguments(object, call.info->required, true, call.arguments);
    const size_t chosen = readArguments(object, call.info->oneOf, false, call.arguments);
    requireOneOf(object, call.info->oneOf, chosen);
    readArguments(object, call.info->optional, false, call.arguments);
}

}  // namespace

std::optional<JsonFault> LineReader::read(std::string_view text, SessionCall& call,
                                          std::string_view& thread) {
    JsonFaults faults;
    if (mDocument.parse(text, faults)) {
        JsonValue(mDocument, faults).readObject([&](JsonObject& object) {
            readMembers(object, call, thread);
        });
    }
    return faults.empty() ? std::nullopt : std::optional(std::move(faults.front()));
}

}  // namespace desk
