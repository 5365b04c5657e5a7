/*
 * The faults that a driver model injects, and the text that describes them.
 */
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <limits>
#include <string_view>

#include "foundation/CommandTable.h"

namespace desk {

/*
 * The text is a list of items with commas between them; blanks around an item do not count.
 *
 *     absent                   there is no node: every open fails with ENOENT
 *     open=ERRNO[*TIMES]       opening the node fails
 *     COMMAND=ERRNO[*TIMES]    the command is refused
 *     slow=[COMMAND:]DURATION  the command takes that much longer; without one, every command
 *
 * COMMAND is a number (28) or a name (taskInit) of the command table. ERRNO is the name of an
 * errno (EINVAL). TIMES, 1 or more, is the number of refusals; without it every one is refused.
 * DURATION is a whole number and us, ms or s, at most 10s. No two items are about the same
 * thing, but a command may have another delay than all. An empty text asks for nothing.
 *
 *     open=EACCES
 *     28=EINVAL*3, slow=taskStart:50us
 */
struct InjectedFaults {
    static constexpr uint64_t kAlways = std::numeric_limits<uint64_t>::max();

    struct Refusal {
        int error = 0;  // 0: none
        uint64_t times = 0;
    };

    Refusal open;
    std::array<Refusal, VELK_COMMANDS.size()> commands = {};
    std::array<std::chrono::microseconds, VELK_COMMANDS.size()> delays = {};

    // Throws std::invalid_argument, whose text names the item and what was expected there.
    static InjectedFaults parse(std::string_view text);
};

}  // namespace desk
