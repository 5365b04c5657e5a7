/*
 * A JSON text, parsed into values that lie one behind the other. No deeper than 100 levels.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace desk {

struct JsonFault {
    std::string path;      // JSON pointer, "" for the whole document
    std::string problem;   // 'found "six"', 'missing', 'unknown key', ...
    std::string expected;  // reads on after "expected"
};

// In the order in which they were found.
using JsonFaults = std::vector<JsonFault>;

enum class JsonType : uint8_t { Null, Boolean, Integer, Unsigned, Float, Text, Array, Object };

// Parses one text after the other, in memory that it keeps. The values of a text lie one behind the
// other, each container ahead of what it contains. What it returns is valid until the next text.
class JsonDocument {
  public:
    static constexpr uint32_t kRoot = 0;

    // False and a fault when it cannot be parsed; then there are no values.
    bool parse(std::string_view text, JsonFaults& faults);

    JsonType type(uint32_t value) const { return mValues[value].type; }
    // Elements of an array or members of an object.
    size_t count(uint32_t value) const { return mValues[value].count; }
    // Those are first(), next() and so on.
    static uint32_t first(uint32_t container) { return container + 1; }
    uint32_t next(uint32_t value) const { return mValues[value].end; }
    std::string_view key(uint32_t member) const { return textOf(mValues[member].key); }

    bool boolean(uint32_t value) const { return mValues[value].bits != 0; }
    int64_t integer(uint32_t value) const { return static_cast<int64_t>(mValues[value].bits); }
    double number(uint32_t value) const;  // of an integer too
    std::string_view text(uint32_t value) const { return textOf(mValues[value].text); }

    // The JSON pointer to a value.
    std::string path(uint32_t value) const;
    // The value as JSON, shortened to what fits into a message.
    std::string describe(uint32_t value) const;

  private:
    class Builder;

    struct Slice {
        uint32_t start = 0;
        uint32_t length = 0;
    };
    struct Value {
        JsonType type = JsonType::Null;
        uint32_t count = 0;
        uint32_t end = 0;  // the place behind the value and what it contains
        Slice key;
        Slice text;
        uint64_t bits = 0;  // of a number or a truth value
    };

    std::string_view textOf(Slice slice) const {
        return std::string_view(mText).substr(slice.start, slice.length);
    }

    std::vector<Value> mValues;
    std::string mText;            // keys and texts
    std::vector<uint32_t> mOpen;  // while a text is parsed: the containers that have not ended
};

// A text in quotes, shortened to what fits into a message.
std::string describeText(std::string_view text);

}  // namespace desk
