/*
 * What velk-replay tells by its exit status.
 */
#pragma once

namespace desk {

inline constexpr int kExitAsExpected = 0;
inline constexpr int kExitUnexpected = 1;
inline constexpr int kExitBadInput = 2;
inline constexpr int kExitInterrupted = 130;

}  // namespace desk
