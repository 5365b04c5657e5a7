/*
 * The time on the desk. A replay can set a clock of its own, so that driver, trace and log have the
 * recorded time.
 */
#pragma once

#include <cstdint>

namespace desk {

using DeskClock = int64_t (*)() noexcept;

// Nanoseconds of the clock that is set, CLOCK_MONOTONIC at first. Any thread may ask.
int64_t nowNs() noexcept;

// Null goes back to CLOCK_MONOTONIC. The clock is called with locks of the desk held, so it must
// not call the desk.
void setClock(DeskClock clock) noexcept;

// The kernel's id of the calling thread, asked of the kernel once a thread.
uint32_t currentTid() noexcept;

}  // namespace desk
