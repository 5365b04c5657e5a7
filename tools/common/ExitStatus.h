/*
 * The exit statuses of the tools.
 */
#pragma once

namespace desk {

inline constexpr int kExitAsExpected = 0;
inline constexpr int kExitUnexpected = 1;
inline constexpr int kExitBadInput = 2;

// As a shell tells of a program that the signal ended.
constexpr int exitStatusOfSignal(int signal) {
    return 128 + signal;
}

}  // namespace desk
