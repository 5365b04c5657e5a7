#include "tuning/JsonDocument.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <nlohmann/json.hpp>

namespace desk {

namespace {

using nlohmann::json;

std::string shorten(const json& value) {
    constexpr size_t kMaxLength = 60;
    std::string text = value.dump(-1, ' ', true, json::error_handler_t::replace);
    if (text.size() > kMaxLength) {
        text.resize(kMaxLength);
        text += "...";
    }
    return text;
}

std::string describePlace(std::string_view text, size_t byte) {
    const std::string_view before = text.substr(0, byte == 0 ? 0 : byte - 1);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const size_t column = before.size() - before.rfind('\n');  // 0 - npos is 1
    return text.find('\n') == std::string_view::npos
                   ? fmt::format("column {}", column)
                   : fmt::format("line {}, column {}", line, column);
}

}  // namespace

// Takes the events of the parser.
class JsonDocument::Builder final : public nlohmann::json_sax<json> {
  public:
    Builder(JsonDocument& document, std::string_view text) : mDocument(document), mInput(text) {}

    JsonFault takeFault() { return std::move(mFault); }

    bool null() override { return add(JsonType::Null); }
    bool boolean(bool value) override { return add(JsonType::Boolean, value ? 1 : 0); }
    bool number_integer(int64_t value) override {
        return add(JsonType::Integer, static_cast<uint64_t>(value));
    }
    bool number_unsigned(uint64_t value) override {
        constexpr auto kMax = uint64_t{std::numeric_limits<int64_t>::max()};
        return add(value <= kMax ? JsonType::Integer : JsonType::Unsigned, value);
    }
    bool number_float(double value, const std::string& /*text*/) override {
        return add(JsonType::Float, std::bit_cast<uint64_t>(value));
    }
    bool string(std::string& text) override {
        add(JsonType::Text);
        mDocument.mValues.back().text = keep(text);
        return true;
    }
    bool binary(json::binary_t& /*value*/) override { return false; }  // not in JSON

    bool start_object(size_t /*members*/) override { return open(JsonType::Object); }
    bool start_array(size_t /*elements*/) override { return open(JsonType::Array); }
    bool end_array() override { return close(); }
    bool end_object() override { return close(); }
    bool key(std::string& name) override {
        mKey = keep(name);
        return true;
    }

    bool parse_error(size_t byte, const std::string& /*token*/,
                     const json::exception& error) override {
        // A number beyond the range of a double is well-formed, and there is no place for it.
        constexpr int kNumberOverflow = 406;
        if (error.id == kNumberOverflow) {
            add(JsonType::Null);
            return fail(last(), "found a number that is too large",
                        "a number in the range of a double");
        }
        mFault = {"", "no JSON at " + describePlace(mInput, byte), "one JSON document"};
        return false;
    }

  private:
    static constexpr uint32_t kOpenEnd = std::numeric_limits<uint32_t>::max();

    uint32_t last() const { return static_cast<uint32_t>(mDocument.mValues.size() - 1); }

    Slice keep(const std::string& text) {
        const auto start = static_cast<uint32_t>(mDocument.mText.size());
        mDocument.mText += text;
        return {start, static_cast<uint32_t>(text.size())};
    }

    bool add(JsonType type, uint64_t bits = 0) {
        if (!mDocument.mOpen.empty()) {
            ++mDocument.mValues[mDocument.mOpen.back()].count;
        }
        const auto end = static_cast<uint32_t>(mDocument.mValues.size() + 1);
        mDocument.mValues.push_back({type, 0, end, mKey, {}, bits});
        return true;
    }

    bool open(JsonType type) {
        constexpr size_t kMaxDepth = 100;
        add(type);
        if (mDocument.mOpen.size() == kMaxDepth) {
            return fail(last(), "nested too deeply", fmt::format("at most {} levels", kMaxDepth));
        }
        mDocument.mOpen.push_back(last());
        mDocument.mValues.back().end = kOpenEnd;
        return true;
    }

    bool close() {
        mDocument.mValues[mDocument.mOpen.back()].end = last() + 1;
        mDocument.mOpen.pop_back();
        return true;
    }

    bool fail(uint32_t value, std::string problem, std::string expected) {
        mFault = {mDocument.path(value), std::move(problem), std::move(expected)};
        return false;
    }

    JsonDocument& mDocument;
    std::string_view mInput;
    Slice mKey;  // of the member that comes next
    JsonFault mFault;
};

bool JsonDocument::parse(std::string_view text, JsonFaults& faults) {
    mValues.clear();
    mText.clear();
    mOpen.clear();
    if (text.size() >= std::numeric_limits<uint32_t>::max()) {
        faults.push_back({"", "too long", "less than 4 GiB"});
        return false;
    }
    Builder builder(*this, text);
    if (!json::sax_parse(text.begin(), text.end(), &builder)) {
        faults.push_back(builder.takeFault());
        mValues.clear();
        return false;
    }
    return true;
}

double JsonDocument::number(uint32_t value) const {
    switch (type(value)) {
        case JsonType::Float:
            return std::bit_cast<double>(mValues[value].bits);
        case JsonType::Unsigned:
            return static_cast<double>(mValues[value].bits);
        default:
            return static_cast<double>(integer(value));
    }
}

std::string JsonDocument::path(uint32_t value) const {
    json::json_pointer path;
    for (uint32_t container = kRoot; container != value;) {
        uint32_t child = first(container);
        size_t place = 0;
        while (next(child) <= value) {
            child = next(child);
            ++place;
        }
        if (type(container) == JsonType::Object) {
            path /= std::string(key(child));
        } else {
            path /= place;
        }
        container = child;
    }
    return path.to_string();
}

std::string JsonDocument::describe(uint32_t value) const {
    const auto toJson = [this](auto&& self, uint32_t place) -> json {
        json result;
        switch (type(place)) {
            case JsonType::Null:
                return nullptr;
            case JsonType::Boolean:
                return boolean(place);
            case JsonType::Integer:
                return integer(place);
            case JsonType::Unsigned:
                return mValues[place].bits;
            case JsonType::Float:
                return number(place);
            case JsonType::Text:
                return text(place);
            case JsonType::Array:
                result = json::array();
                for (uint32_t i = first(place); i < next(place); i = next(i)) {
                    result.push_back(self(self, i));
                }
                return result;
            case JsonType::Object:
                result = json::object();
                for (uint32_t i = first(place); i < next(place); i = next(i)) {
                    result[std::string(key(i))] = self(self, i);
                }
                return result;
        }
        return result;
    };
    return shorten(toJson(toJson, value));
}

std::string describeText(std::string_view text) {
    return shorten(json(text));
}

}  // namespace desk
