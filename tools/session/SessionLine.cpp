#include "session/SessionLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <type_traits>

#include "text/PrintableText.h"
#include "tuning/ControlTable.h"

namespace desk {

namespace {

// Of every number of up to 64 bits, and of every float in its shortest form.
constexpr size_t kMaxNumberLength = 32;

template <typename Number, typename... Format>
void appendNumber(std::string& text, Number number, Format... format) {
    std::array<char, kMaxNumberLength> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, format...);
    text.append(digits.data(), end.ptr);
}

template <std::integral Number>
void append(std::string& text, Number number) {
    appendNumber(text, number);
}

void append(std::string& text, bool flag) {
    text += flag ? "true" : "false";
}

void append(std::string& text, float number) {
    constexpr float kMax = std::numeric_limits<float>::max();
    appendNumber(text, std::isnan(number) ? 0.0F : std::clamp(number, -kMax, kMax));
}

void append(std::string& text, const void* key) {
    constexpr int kHexadecimal = 16;
    text += "\"0x";
    appendNumber(text, reinterpret_cast<uintptr_t>(key), kHexadecimal);
    text += '"';
}

// Whether the text is written as it is: ASCII without control characters, quotes and backslashes.
bool isPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c < '\x7F' && c != '"' && c != '\\'; });
}

void appendText(std::string& text, std::string_view value, size_t maxLength) {
    if (value.size() <= maxLength && isPlain(value)) {
        text += '"';
        text.append(value);
        text += '"';
        return;
    }
    const std::string changed = isPrintable(value) ? std::string() : printableText(value);
    text += '"';
    for (const char c : cutToBytes(changed.empty() ? value : changed, maxLength)) {
        if (c == '"' || c == '\\') {
            text += '\\';
        }
        text += c;
    }
    text += '"';
}

void append(std::string& text, const std::pair<const int32_t, int32_t>& taskAndUclamp) {
    text += '[';
    append(text, taskAndUclamp.first);
    text += ", ";
    append(text, taskAndUclamp.second);
    text += ']';
}

template <typename Elements>
requires requires(const Elements& elements) {
    elements.begin();
}
void append(std::string& text, const Elements& elements) {
    text += '[';
    const char* separator = "";
    for (const auto& element : elements) {
        text += separator;
        append(text, element);
        separator = ", ";
    }
    text += ']';
}

void append(std::string& text, const VELKSingleShotControl& control) {
    const VELKSingleShotControl byDefault;
    text += '{';
    const char* separator = "\"";
    for (const ControlMember& member : kControlMembers) {
        std::visit(
                [&](auto field) {
                    if (control.*field != byDefault.*field) {
                        text.append(separator).append(member.name).append("\": ");
                        append(text, control.*field);
                        separator = ", \"";
                    }
                },
                member.field);
    }
    text += '}';
}

void appendKey(std::string& text, std::string_view key) {
    text.append(", \"").append(key).append("\": ");
}

// Calls `appendName` ahead of each argument that has a value.
template <typename AppendName>
void appendArguments(std::string& text, const CallArguments& arguments, AppendName&& appendName) {
    for (const ArgumentInfo& info : kArguments) {
        std::visit(
                [&](auto field) {
                    const auto& argument = arguments.*field;
                    if (!argument) {
                        return;
                    }
                    appendName(info.name);
                    if constexpr (std::is_same_v<decltype(*argument), const std::string&>) {
                        appendText(text, *argument, info.maxLength);
                    } else {
                        append(text, *argument);
                    }
                },
                info.field);
    }
}

}  // namespace

void appendSessionLine(std::string& text, int64_t atUs, std::string_view thread,
                       std::string_view call, const CallArguments& arguments) {
    text += "{\"at_us\": ";
    append(text, atUs);
    text += ", \"thread\": ";
    appendText(text, thread.empty() ? "?" : thread, kMaxNameLength);
    text.append(", \"call\": \"").append(call).append("\"");
    appendArguments(text, arguments, [&text](std::string_view name) { appendKey(text, name); });
    text += "}\n";
}

std::string describeCall(std::string_view call, const CallArguments& arguments) {
    std::string text(call);
    const char* separator = "(";
    appendArguments(text, arguments, [&](std::string_view name) {
        text.append(separator).append(name) += '=';
        separator = ", ";
    });
    return text.append(*separator == '(' ? "()" : ")");
}

}  // namespace desk
