#include "tune/JsonLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace desk {

namespace {

using nlohmann::ordered_json;

constexpr size_t kIndent = 4;
constexpr size_t kMaxWidth = 100;

bool isFlat(const ordered_json& json) {
    return std::none_of(json.begin(), json.end(),
                        [](const ordered_json& each) { return each.is_structured(); });
}

// An array of one flat object is written on one line as well.
bool isShort(const ordered_json& json) {
    return json.is_array() && json.size() == 1 && isFlat(json[0]) && json.dump().size() < kMaxWidth;
}

std::string writeValue(const ordered_json& json, size_t depth) {
    if (!json.is_structured()) {
        return json.dump();
    }
    const bool isOneLine = isFlat(json) || isShort(json);
    const std::string border = isOneLine ? "" : "\n" + std::string(kIndent * (depth + 1), ' ');
    std::string text;
    for (const auto& [key, value] : json.items()) {
        text += text.empty() ? border : isOneLine ? ", " : "," + border;
        text += json.is_object() ? ordered_json(key).dump() + ": " : "";
        text += writeValue(value, depth + 1);
    }
    if (!isOneLine) {
        text += "\n" + std::string(kIndent * depth, ' ');
    }
    return json.is_object() ? "{" + text + "}" : "[" + text + "]";
}

}  // namespace

std::string layOut(const ordered_json& json) {
    return writeValue(json, 0) + "\n";
}

}  // namespace desk
