/*
 * Text from outside, such as names of tasks and threads, on its way to a terminal.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace desk {

// The text with control characters and bytes that are no UTF-8 as \n, \t or \xNN. With `quote`
// other than zero that character and the backslash get a backslash as well.
std::string printableText(std::string_view text, char quote = '\0');

// Whether printableText leaves the text as it is.
bool isPrintable(std::string_view text);

// The longest prefix of at most that many bytes that does not end within a character.
std::string_view cutToBytes(std::string_view text, size_t bytes);

// The columns that a terminal takes for a printable text.
size_t displayWidth(std::string_view text);

// The text if it fits into that many columns, else as much as fits, with a mark of omission.
std::string cutToWidth(std::string_view text, size_t columns);

}  // namespace desk
