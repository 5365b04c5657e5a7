#include "tuning/CheckedJson.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace desk {

namespace {

using nlohmann::json;

// A key as it stands in a JSON pointer.
std::string escapeKey(std::string_view key) {
    std::string escaped;
    for (const char c : key) {
        if (c == '~') {
            escaped += "~0";
        } else if (c == '/') {
            escaped += "~1";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

constexpr size_t kMaxLength = 60;  // of what a message says about a value

std::string dumpPlain(const json& value) {
    return value.dump(-1, ' ', true, json::error_handler_t::replace);
}

// Goes no deeper than the text may be long: a document can be nested deeper than the stack bears.
void appendJson(const json& value, std::string& text) {
    if (!value.is_structured()) {
        text += dumpPlain(value);
        return;
    }
    text += value.is_array() ? '[' : '{';
    const char* separator = "";
    for (const auto& item : value.items()) {
        if (text.size() > kMaxLength) {
            return;
        }
        text += separator;
        text += value.is_array() ? std::string() : dumpPlain(item.key()) + ':';
        appendJson(item.value(), text);
        separator = ",";
    }
    text += value.is_array() ? ']' : '}';
}

std::vector<std::string_view> joinKeys(std::initializer_list<std::string_view> first,
                                       std::initializer_list<std::string_view> second) {
    std::vector<std::string_view> keys(first);
    keys.insert(keys.end(), second);
    return keys;
}

}  // namespace

std::string describeJson(const json& value) {
    std::string text;
    appendJson(value, text);
    if (text.size() > kMaxLength) {
        text.resize(kMaxLength);
        text += "...";
    }
    return text;
}

std::string describeRange(int64_t min, int64_t max) {
    return fmt::format("a whole number from {} to {}", min, max);
}

void CheckedJson::fail(std::string problem, std::string expected) const {
    throw JsonFault{mPath, std::move(problem), std::move(expected)};
}

void CheckedJson::failAsFound(std::string expected) const {
    fail("found " + describeJson(*mValue), std::move(expected));
}

void CheckedJson::checkKeys(std::initializer_list<std::string_view> required,
                            std::initializer_list<std::string_view> optional) const {
    const auto keys = joinKeys(required, optional);
    if (!mValue->is_object()) {
        failAsFound(fmt::format("an object with the keys {}", fmt::join(keys, ", ")));
    }
    for (const auto& item : mValue->items()) {
        if (std::find(keys.begin(), keys.end(), item.key()) == keys.end()) {
            CheckedJson(item.value(), mPath + '/' + escapeKey(item.key()))
                    .fail("unknown key", fmt::format("one of {}", fmt::join(keys, ", ")));
        }
    }
    for (const std::string_view key : required) {
        if (mValue->find(key) == mValue->end()) {
            throw JsonFault{fmt::format("{}/{}", mPath, key), "missing",
                            fmt::format("all of {}", fmt::join(required, ", "))};
        }
    }
}

std::optional<CheckedJson> CheckedJson::find(std::string_view key) const {
    const auto found = mValue->find(key);
    return found == mValue->end()
                   ? std::nullopt
                   : std::optional(CheckedJson(*found, mPath + '/' + escapeKey(key)));
}

CheckedJson CheckedJson::at(std::string_view key) const {
    return CheckedJson(mValue->find(key).value(), mPath + '/' + escapeKey(key));
}

std::vector<CheckedJson> CheckedJson::elements(size_t min, size_t max) const {
    if (!mValue->is_array() || mValue->size() < min || mValue->size() > max) {
        failAsFound(max == kNoLimit ? std::string("an array")
                    : min == max    ? fmt::format("an array of {} elements", max)
                                    : fmt::format("an array of {} to {} elements", min, max));
    }
    std::vector<CheckedJson> result;
    result.reserve(mValue->size());
    for (const json& element : *mValue) {
        result.push_back(CheckedJson(element, fmt::format("{}/{}", mPath, result.size())));
    }
    return result;
}

int64_t CheckedJson::checkInteger(int64_t min, int64_t max) const {
    // Numbers above the signed range are kept as unsigned ones, numbers beyond both as floats.
    const bool isSigned =
            mValue->is_number_integer() &&
            (!mValue->is_number_unsigned() ||
             mValue->get<uint64_t>() <= uint64_t{std::numeric_limits<int64_t>::max()});
    if (!isSigned || mValue->get<int64_t>() < min || mValue->get<int64_t>() > max) {
        failAsFound(describeRange(min, max));
    }
    return mValue->get<int64_t>();
}

bool CheckedJson::boolean() const {
    if (!mValue->is_boolean()) {
        failAsFound("true or false");
    }
    return mValue->get<bool>();
}

std::string CheckedJson::text(size_t maxLength) const {
    const auto* text = mValue->get_ptr<const std::string*>();
    if (text == nullptr || text->empty() || text->size() > maxLength) {
        failAsFound(fmt::format("a text of 1 to {} characters", maxLength));
    }
    return *text;
}

}  // namespace desk
