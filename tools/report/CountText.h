/*
 * Counts with their noun.
 */
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace desk {

// "1 call", "2 calls".
inline std::string countOf(uint64_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace desk
