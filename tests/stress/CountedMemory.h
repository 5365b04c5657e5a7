/*
 * What the whole program has allocated and not given back, to the byte.
 */
#pragma once

#include <cstddef>
#include <cstdint>

size_t liveBytes();
// By the library, since the start of the program.
uint64_t allocations();
