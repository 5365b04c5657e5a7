#include "tuning/JsonText.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "tuning/CheckedJson.h"

namespace desk {

namespace {

using nlohmann::json;

// Follows the parser through the document and remembers the keys of every object that is open.
class DuplicateKeyCheck {
  public:
    void follow(json::parse_event_t event, const json& parsed) {
        switch (event) {
            case json::parse_event_t::object_start:
            case json::parse_event_t::array_start:
                beginElement();
                mOpen.emplace_back();
                mOpen.back().isArray = event == json::parse_event_t::array_start;
                break;
            case json::parse_event_t::object_end:
            case json::parse_event_t::array_end:
                mOpen.pop_back();
                break;
            case json::parse_event_t::key:
                addKey(parsed.get<std::string>());
                break;
            case json::parse_event_t::value:
                beginElement();
                break;
        }
    }

  private:
    struct Container {
        bool isArray = false;
        size_t elements = 0;
        std::set<std::string> keys;
        std::string place;  // of the element that is being read
    };

    void beginElement() {
        if (!mOpen.empty() && mOpen.back().isArray) {
            mOpen.back().place = std::to_string(mOpen.back().elements++);
        }
    }

    void addKey(std::string key) {
        mOpen.back().place = key;
        if (!mOpen.back().keys.insert(std::move(key)).second) {
            std::string path;
            for (const Container& container : mOpen) {
                path += '/' + container.place;
            }
            throw JsonFault{path, "duplicate key", "each key once in its object"};
        }
    }

    std::vector<Container> mOpen;
};

std::string describePlace(std::string_view text, size_t byte) {
    const std::string_view before = text.substr(0, byte == 0 ? 0 : byte - 1);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const size_t lineStart = before.rfind('\n') + 1;  // 0 in the first line
    return fmt::format("line {}, column {}", line, before.size() - lineStart + 1);
}

}  // namespace

json parseJsonText(std::string_view text) {
    DuplicateKeyCheck check;
    try {
        return json::parse(text, [&check](int, json::parse_event_t event, const json& parsed) {
            check.follow(event, parsed);
            return true;
        });
    } catch (const json::parse_error& error) {
        throw JsonFault{"", "no JSON at " + describePlace(text, error.byte), "one JSON document"};
    } catch (const json::out_of_range&) {
        throw JsonFault{"", "a number is too large to be read", "numbers of at most 64 bits"};
    }
}

}  // namespace desk
