#include "play/KernelCounts.h"

#include <fmt/format.h>

#include <cinttypes>
#include <cstdio>
#include <functional>
#include <map>
#include <utility>

namespace desk {

namespace {

using Counts = std::pair<uint64_t, uint64_t>;  // accepted and refused

std::map<std::string, Counts, std::less<>> readCounts(std::istream& state, pid_t process) {
    std::map<std::string, Counts, std::less<>> counts;
    const std::string head = fmt::format("process {} ", process);
    bool isWanted = false;
    for (std::string line; std::getline(state, line);) {
        if (line.starts_with("process ")) {
            isWanted = line.starts_with(head);
        }
        char name[32] = {};
        Counts found;
        if (isWanted && sscanf(line.c_str(), "  command %31s accepted=%" SCNu64 " refused=%" SCNu64,
                               name, &found.first, &found.second) == 3) {
            counts[name] = found;
        }
    }
    return counts;
}

}  // namespace

std::vector<std::string> differentCounts(std::istream& state, pid_t process,
                                         const DriverSnapshot& model) {
    auto counts = readCounts(state, process);
    std::vector<std::string> differences;
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        const char* const name = VELK_COMMANDS[i].name;
        const auto [accepted, refused] = counts[name];
        const CallCounters& expected = model.commands[i];
        if (accepted != expected.accepted || refused != expected.refused) {
            differences.push_back(
                    fmt::format("{}: the kernel has taken {} and refused {}, the model {} and {}",
                                name, accepted, refused, expected.accepted, expected.refused));
        }
    }
    return differences;
}

}  // namespace desk
