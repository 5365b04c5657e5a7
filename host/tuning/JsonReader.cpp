#include "tuning/JsonReader.h"

#include <android-base/parseint.h>
#include <android-base/strings.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "text/PrintableText.h"

namespace desk {

void JsonValue::fail(std::string problem, std::string expected) const {
    if (mFaults->size() >= mMaxFaults) {
        return;
    }
    std::string path = mDocument->path(mValue);
    if (isMissing()) {
        path.append(1, '/').append(mMissing);
    }
    mFaults->push_back({std::move(path), std::move(problem), std::move(expected)});
}

void JsonValue::failAsFound(std::string expected) const {
    fail(isMissing() ? "missing" : "found " + mDocument->describe(mValue), std::move(expected));
}

bool JsonValue::read(bool& value) const {
    if (!is(JsonType::Boolean)) {
        failAsFound("true or false");
        return false;
    }
    value = mDocument->boolean(mValue);
    return true;
}

bool JsonValue::read(float& value) const {
    constexpr double kMax = std::numeric_limits<float>::max();
    constexpr double kTooLarge = 0x1.ffffffp127;  // half a step further: is not rounded to kMax
    const bool isNumber = is(JsonType::Integer) || is(JsonType::Unsigned) || is(JsonType::Float);
    const double number = isNumber ? mDocument->number(mValue) : 0;
    if (!isNumber || std::abs(number) >= kTooLarge) {
        failAsFound("a number in the range of a 32-bit float");
        return false;
    }
    value = static_cast<float>(std::clamp(number, -kMax, kMax));
    return true;
}

bool JsonValue::read(std::string_view& value, TextLength length) const {
    const std::string_view text = is(JsonType::Text) ? mDocument->text(mValue) : std::string_view();
    if (!is(JsonType::Text) || text.size() < length.min || text.size() > length.max ||
        !isPrintable(text)) {
        failAsFound(fmt::format("a text of {} to {} printable characters", length.min, length.max));
        return false;
    }
    value = text;
    return true;
}

bool JsonValue::read(std::string& value, TextLength length) const {
    std::string_view text;
    const bool isRead = read(text, length);
    value = isRead ? text : value;
    return isRead;
}

bool JsonValue::read(const void*& value) const {
    const std::string text(is(JsonType::Text) ? mDocument->text(mValue) : std::string_view());
    uint64_t number = 0;
    if (!isPrintable(text) || !android::base::StartsWithIgnoreCase(text, "0x") ||
        !android::base::ParseUint(text, &number)) {
        failAsFound("a text such as \"0x55fd\" with at most 16 hexadecimal digits");
        return false;
    }
    value = reinterpret_cast<const void*>(static_cast<uintptr_t>(number));
    return true;
}

std::optional<int64_t> JsonValue::integer(int64_t min, int64_t max) const {
    if (!is(JsonType::Integer) || mDocument->integer(mValue) < min ||
        mDocument->integer(mValue) > max) {
        failAsFound(fmt::format("a whole number from {} to {}", min, max));
        return std::nullopt;
    }
    return mDocument->integer(mValue);
}

bool JsonValue::checkElements(size_t min, size_t max) const {
    if (is(JsonType::Array) && mDocument->count(mValue) >= min && mDocument->count(mValue) <= max) {
        return true;
    }
    failAsFound(max == kNoLimit ? std::string("an array")
                : min == max    ? fmt::format("an array of {} elements", max)
                                : fmt::format("an array of {} to {} elements", min, max));
    return false;
}

JsonValue JsonValue::at(uint32_t value) const {
    JsonValue other = *this;
    other.mValue = value;
    return other;
}

JsonObject::JsonObject(const JsonValue& object)
    : mObject(object), mNext(JsonDocument::first(object.mValue)) {
    constexpr size_t kMostly = 8;
    mAsked.reserve(kMostly);
}

JsonValue JsonObject::at(std::string_view key) {
    std::optional<JsonValue> found = find(key);
    if (!found) {
        found = mObject;
        found->mMissing = key;
    }
    return *found;
}

// Begins behind the member that was found last, because most are asked for in their order.
std::optional<JsonValue> JsonObject::find(std::string_view key) {
    mAsked.push_back(key);
    const JsonDocument& document = *mObject.mDocument;
    const uint32_t end = document.next(mObject.mValue);
    for (size_t tried = 0; tried < document.count(mObject.mValue); ++tried) {
        const uint32_t member = mNext < end ? mNext : JsonDocument::first(mObject.mValue);
        mNext = document.next(member);
        if (document.key(member) == key) {
            ++mFound;
            return mObject.at(member);
        }
    }
    return std::nullopt;
}

// As many members as keys that were found: then there is neither another one nor one that stands
// twice.
void JsonObject::refuseOthers() const {
    const JsonDocument& document = *mObject.mDocument;
    if (mFound == document.count(mObject.mValue)) {
        return;
    }
    std::set<std::string_view> seen;
    for (uint32_t member = JsonDocument::first(mObject.mValue);
         member < document.next(mObject.mValue); member = document.next(member)) {
        const std::string_view key = document.key(member);
        if (!seen.insert(key).second) {
            mObject.at(member).fail("duplicate key", "each key once in its object");
        } else if (std::find(mAsked.begin(), mAsked.end(), key) == mAsked.end()) {
            mObject.at(member).fail("unknown key",
                                    fmt::format("one of {}", fmt::join(mAsked, ", ")));
        }
    }
}

}  // namespace desk
