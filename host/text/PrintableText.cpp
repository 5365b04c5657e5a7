#include "text/PrintableText.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace desk {

namespace {

uint8_t byteAt(std::string_view text, size_t place) {
    return static_cast<uint8_t>(text[place]);
}

// The second byte must lie in a narrower range after some first ones: other values would spell a
// shorter character at greater length, a surrogate, or a number beyond the last character.
bool isSecondByte(uint8_t first, uint8_t second) {
    switch (first) {
        case 0xE0:
            return second >= 0xA0 && second < 0xC0;
        case 0xED:
            return second >= 0x80 && second < 0xA0;
        case 0xF0:
            return second >= 0x90 && second < 0xC0;
        case 0xF4:
            return second >= 0x80 && second < 0x90;
        default:
            return (second & 0xC0) == 0x80;
    }
}

// How many bytes the UTF-8 character at the start of the text has, 0 where there is none.
size_t characterSize(std::string_view text) {
    const uint8_t first = byteAt(text, 0);
    if (first < 0x80) {
        return 1;
    }
    const size_t size = first >= 0xC2 && first < 0xE0   ? 2
                        : first >= 0xE0 && first < 0xF0 ? 3
                        : first >= 0xF0 && first < 0xF5 ? 4
                                                        : 0;
    if (size == 0 || text.size() < size || !isSecondByte(first, byteAt(text, 1))) {
        return 0;
    }
    for (size_t place = 2; place < size; ++place) {
        if ((byteAt(text, place) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return size;
}

bool isControl(std::string_view character) {
    const uint8_t first = byteAt(character, 0);
    const bool isC1 = first == 0xC2 && byteAt(character, 1) < 0xA0;
    return first < 0x20 || first == 0x7F || isC1;
}

void appendEscaped(std::string& result, std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\t') {
            result += "\\t";
        } else {
            fmt::format_to(std::back_inserter(result), "\\x{:02x}", static_cast<uint8_t>(byte));
        }
    }
}

}  // namespace

std::string printableText(std::string_view text, char quote) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const size_t size = characterSize(text);
        const std::string_view character = text.substr(0, size == 0 ? 1 : size);
        if (size == 0 || isControl(character)) {
            appendEscaped(result, character);
        } else {
            if (quote != '\0' && (character[0] == quote || character[0] == '\\')) {
                result += '\\';
            }
            result += character;
        }
        text.remove_prefix(character.size());
    }
    return result;
}

bool isPrintable(std::string_view text) {
    while (!text.empty()) {
        const size_t size = characterSize(text);
        if (size == 0 || isControl(text.substr(0, size))) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

std::string_view cutToBytes(std::string_view text, size_t bytes) {
    if (text.size() <= bytes) {
        return text;
    }
    // Bytes other than the first of a character begin with the bits 10.
    while (bytes > 0 && (byteAt(text, bytes) & 0xC0) == 0x80) {
        --bytes;
    }
    return text.substr(0, bytes);
}

size_t displayWidth(std::string_view text) {
    // Filled up to more columns than it can take: what is not filling is its own width.
    const size_t columns = 2 * text.size();
    return columns - (fmt::formatted_size("{:<{}}", text, columns) - text.size());
}

std::string cutToWidth(std::string_view text, size_t columns) {
    if (displayWidth(text) <= columns) {
        return std::string(text);
    }
    if (columns == 0) {
        return "";
    }
    std::string_view rest = text;
    size_t used = 0;
    while (true) {
        const std::string_view character = rest.substr(0, std::max<size_t>(characterSize(rest), 1));
        used += displayWidth(character);
        if (used > columns - 1) {
            break;
        }
        rest.remove_prefix(character.size());
    }
    return fmt::format("{}…", text.substr(0, text.size() - rest.size()));
}

}  // namespace desk
