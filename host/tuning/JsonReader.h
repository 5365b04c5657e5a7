/*
 * Reads a JSON document member by member and checks what it finds. Every fault is kept with the
 * place, what was found there and what was expected, and reading goes on behind it.
 */
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "tuning/JsonDocument.h"

namespace desk {

struct TextLength {
    size_t min = 0;  // both in bytes
    size_t max = 0;
};

template <typename T>
concept WholeNumber = (std::integral<T> || std::is_enum_v<T>)&&!std::same_as<T, bool>;

class JsonObject;

// As many faults as somebody reads.
inline constexpr size_t kMostFaults = 20;

// A value, or the place where one is missing. Document and faults must outlive it. Reading adds
// faults until there are `maxFaults`.
class JsonValue {
  public:
    // All of the document.
    JsonValue(const JsonDocument& document, JsonFaults& faults, size_t maxFaults = kMostFaults)
        : mDocument(&document), mFaults(&faults), mMaxFaults(maxFaults) {}

    void fail(std::string problem, std::string expected) const;
    // A fault with the value as what was found, or with "missing".
    void failAsFound(std::string expected) const;

    // Each of these takes the value over when it is what it has to be. Otherwise a fault
    // is added, `value` stays as it is, and the result is false.
    bool read(bool& value) const;
    bool read(float& value) const;
    bool read(std::string& value, TextLength length) const;  // of printable characters
    bool read(std::string_view& value, TextLength length) const;
    bool read(const void*& value) const;  // of a text such as "0x55fd"
    template <WholeNumber T>
    bool read(T& value, int64_t min = smallest<T>(), int64_t max = largest<T>()) const;
    // So many elements, each within the range.
    template <WholeNumber T, size_t kCount>
    bool read(std::array<T, kCount>& values, int64_t min = smallest<T>(),
              int64_t max = largest<T>()) const;
    template <typename T, typename... Rules>
    bool read(std::optional<T>& value, Rules... rules) const;

    // Calls `readElement` with every element of an array that has so many. False when anything is
    // wrong in it.
    template <typename Reader>
    bool readElements(Reader&& readElement, size_t min = 0, size_t max = kNoLimit) const;
    // Calls `readMembers` with an object, and adds a fault for every member that it did not ask
    // for, or that stands twice. False when anything is wrong in it.
    template <typename Reader>
    bool readObject(Reader&& readMembers) const;

    static constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

  private:
    friend class JsonObject;

    JsonValue at(uint32_t value) const;
    bool isMissing() const { return mMissing.data() != nullptr; }
    bool is(JsonType type) const { return !isMissing() && mDocument->type(mValue) == type; }

    template <typename T>
    static constexpr auto smallest() {
        if constexpr (std::is_enum_v<T>) {
            return int64_t{std::numeric_limits<std::underlying_type_t<T>>::min()};
        } else {
            return int64_t{std::numeric_limits<T>::min()};
        }
    }
    template <typename T>
    static constexpr auto largest() {
        if constexpr (std::is_enum_v<T>) {
            return int64_t{std::numeric_limits<std::underlying_type_t<T>>::max()};
        } else {
            return int64_t{std::numeric_limits<T>::max()};
        }
    }

    std::optional<int64_t> integer(int64_t min, int64_t max) const;
    bool checkElements(size_t min, size_t max) const;

    const JsonDocument* mDocument;
    JsonFaults* mFaults;
    size_t mMaxFaults;
    uint32_t mValue = JsonDocument::kRoot;
    std::string_view mMissing;  // the key that the object mValue does not have
};

// The members of an object, while JsonValue::readObject reads them.
class JsonObject {
  public:
    explicit JsonObject(const JsonValue& object);

    // A member that has to be there. A missing one becomes a fault when it is read.
    JsonValue at(std::string_view key);
    // A member that may be left out.
    std::optional<JsonValue> find(std::string_view key);

    template <typename T, typename... Rules>
    bool require(std::string_view key, T& value, Rules... rules) {
        return at(key).read(value, rules...);
    }
    // Leaves `value` as it is where there is no such member, which is no fault.
    template <typename T, typename... Rules>
    bool allow(std::string_view key, T& value, Rules... rules) {
        const std::optional<JsonValue> found = find(key);
        return !found || found->read(value, rules...);
    }

    // A fault for every member that has not been asked for, and for those that stand twice.
    void refuseOthers() const;

  private:
    JsonValue mObject;
    uint32_t mNext;  // the member to look at first
    std::vector<std::string_view> mAsked;
    size_t mFound = 0;  // of those that were asked for
};

template <WholeNumber T>
bool JsonValue::read(T& value, int64_t min, int64_t max) const {
    const std::optional<int64_t> number = integer(min, max);
    value = number ? static_cast<T>(*number) : value;
    return number.has_value();
}

template <WholeNumber T, size_t kCount>
bool JsonValue::read(std::array<T, kCount>& values, int64_t min, int64_t max) const {
    size_t place = 0;
    return readElements([&](const JsonValue& element) { element.read(values[place++], min, max); },
                        kCount, kCount);
}

template <typename T, typename... Rules>
bool JsonValue::read(std::optional<T>& value, Rules... rules) const {
    T present = {};
    if (!read(present, rules...)) {
        return false;
    }
    value = std::move(present);
    return true;
}

template <typename Reader>
bool JsonValue::readElements(Reader&& readElement, size_t min, size_t max) const {
    if (!checkElements(min, max)) {
        return false;
    }
    const size_t faultsBefore = mFaults->size();
    for (uint32_t element = JsonDocument::first(mValue); element < mDocument->next(mValue);
         element = mDocument->next(element)) {
        readElement(at(element));
    }
    return mFaults->size() == faultsBefore;
}

template <typename Reader>
bool JsonValue::readObject(Reader&& readMembers) const {
    if (!is(JsonType::Object)) {
        failAsFound("an object");
        return false;
    }
    const size_t faultsBefore = mFaults->size();
    JsonObject object(*this);
    readMembers(object);
    object.refuseOthers();
    return mFaults->size() == faultsBefore;
}

}  // namespace desk
