#include "session/CallTable.h"

#include <cutils/properties.h>
#include <fmt/format.h>

#include <algorithm>
#include <concepts>
#include <iterator>

namespace desk {

static_assert(kMaxPropertyLength == PROPERTY_VALUE_MAX - 1);

namespace {

std::string listNames(const ArgumentList& list, const char* separator) {
    std::string names;
    for (const size_t place : list) {
        names.append(names.empty() ? "" : separator).append(kArguments[place].name);
    }
    return names;
}

// "key, task, [groupHead, extraFlag0, extraFlag1]"
std::string describeMembers(const CallInfo& call) {
    const std::string needed = listNames(call.required, ", ") + listNames(call.oneOf, " or ");
    const std::string optional = listNames(call.optional, ", ");
    const char* separator = needed.empty() || optional.empty() ? "" : ", ";
    return optional.empty() ? needed : fmt::format("{}{}[{}]", needed, separator, optional);
}

struct DescribeType {
    const ArgumentInfo& info;

    template <std::integral Number>
    std::string operator()(std::optional<Number> CallArguments::*) const {
        return fmt::format("whole number, {} bits, {}signed", 8 * sizeof(Number),
                           std::is_signed_v<Number> ? "" : "un");
    }
    std::string operator()(std::optional<bool> CallArguments::*) const { return "true or false"; }
    std::string operator()(std::optional<float> CallArguments::*) const {
        return "number in the range of a 32-bit float";
    }
    std::string operator()(std::optional<const void*> CallArguments::*) const {
        return "text of 0x and 1 to 16 hexadecimal digits: the value of the caller's key";
    }
    std::string operator()(std::optional<std::string> CallArguments::*) const {
        return fmt::format("{} to {} printable characters", info.minLength, info.maxLength);
    }
    std::string operator()(std::unique_ptr<const VELKSingleShotControl> CallArguments::*) const {
        return "object with any of the members of VELKSingleShotControl";
    }
};

}  // namespace

int runSetProperty(const CallArguments& a) {
    return property_set(valueOf(a.name).c_str(), valueOf(a.value).c_str());
}

const CallInfo* findCall(std::string_view name) {
    const auto found = std::ranges::find(callTable(), name, &CallInfo::name);
    return found != callTable().end() ? &*found : nullptr;
}

std::string listCalls() {
    std::string names;
    for (const CallInfo& info : callTable()) {
        names.append(names.empty() ? "" : ", ").append(info.name);
    }
    return names;
}

std::string describeCalls() {
    std::string text = "Calls and their members; those in brackets may be left out:\n";
    for (const CallInfo& call : callTable()) {
        const std::string members = describeMembers(call);
        fmt::format_to(std::back_inserter(text), "  {}{}{}\n", call.name,
                       members.empty() ? "" : ": ", members);
    }
    text += "\nMembers:\n";
    for (const ArgumentInfo& info : kArguments) {
        fmt::format_to(std::back_inserter(text), "  {:<25} {}\n", info.name,
                       std::visit(DescribeType{info}, info.field));
    }
    return text;
}

}  // namespace desk
