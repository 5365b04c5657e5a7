/*
 * Signals that a tool receives from a descriptor.
 */
#pragma once

#include <csignal>
#include <initializer_list>

namespace desk {

// Those that are not ignored: an ignored signal, once blocked, would be received all the same.
inline sigset_t signalsNotIgnored(std::initializer_list<int> signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&set, signal);
        }
    }
    return set;
}

}  // namespace desk
