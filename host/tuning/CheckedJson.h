/*
 * Reads a JSON document field by field and checks what it finds. Every fault is thrown with the
 * place, what was found there and what was expected.
 */
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace desk {

struct JsonFault {
    std::string path;      // JSON pointer, "" for the whole document
    std::string problem;   // 'found "six"', 'missing', 'unknown key', ...
    std::string expected;  // reads on after "expected"
};

// The value shortened to what fits into a message.
std::string describeJson(const nlohmann::json& value);
// "a whole number from 0 to 1024"
std::string describeRange(int64_t min, int64_t max);

// One value and the path to it. The document must live on.
class CheckedJson {
  public:
    explicit CheckedJson(const nlohmann::json& document) : mValue(&document) {}

    const std::string& path() const { return mPath; }
    [[noreturn]] void fail(std::string problem, std::string expected) const;
    // Fails with the value as what was found.
    [[noreturn]] void failAsFound(std::string expected) const;

    // Of an object with all of the required keys and no others than those and the optional ones.
    void checkKeys(std::initializer_list<std::string_view> required,
                   std::initializer_list<std::string_view> optional = {}) const;
    std::optional<CheckedJson> find(std::string_view key) const;
    CheckedJson at(std::string_view key) const;

    // Of an array with so many elements.
    std::vector<CheckedJson> elements(size_t min = 0, size_t max = kNoLimit) const;

    template <typename Integer>
    Integer integer(int64_t min = std::numeric_limits<Integer>::min(),
                    int64_t max = std::numeric_limits<Integer>::max()) const {
        return static_cast<Integer>(checkInteger(min, max));
    }
    bool boolean() const;
    std::string text(size_t maxLength) const;  // at least one character

  private:
    static constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

    CheckedJson(const nlohmann::json& value, std::string path)
        : mValue(&value), mPath(std::move(path)) {}

    int64_t checkInteger(int64_t min, int64_t max) const;

    const nlohmann::json* mValue;
    std::string mPath;
};

}  // namespace desk
