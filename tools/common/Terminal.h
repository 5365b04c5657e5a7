/*
 * What a terminal can show.
 */
#pragma once

#include <cstddef>
#include <optional>

namespace desk {

// The columns of the terminal that the descriptor leads to at this moment, none when it leads to
// something else.
std::optional<size_t> terminalColumns(int descriptor);

// Whether a line on the terminal can be written over.
bool canTerminalEraseLines();

}  // namespace desk
