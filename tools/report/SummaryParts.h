/*
 * The parts of a summary that have a file of their own, and what the parts have in common.
 */
#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "analysis/SessionFigures.h"
#include "report/CountText.h"

namespace desk {

using TextOutput = std::back_insert_iterator<std::string>;

nlohmann::ordered_json framesToJson(const FrameFigures& frames);
nlohmann::ordered_json boostsToJson(const SessionFigures& figures);
nlohmann::ordered_json unresetToJson(const UnresetControls& unreset);

// Each writes nothing when the session has nothing of its kind.
void writeFrames(TextOutput out, const FrameFigures& frames);
// `unit` is the unit in which calls are numbered.
void writeBoosts(TextOutput out, const SessionFigures& figures, const char* unit);
void writeUnreset(TextOutput out, const UnresetControls& unreset, const char* unit);

constexpr double milliseconds(int64_t us) {
    constexpr double kUsPerMs = 1e3;
    return static_cast<double>(us) / kUsPerMs;
}

// "-" for a figure that needs at least one time.
inline std::string textOf(const DistributionFigures& times, int64_t figure) {
    return times.count > 0 ? fmt::format("{}", figure) : "-";
}

// Null for such a figure.
inline nlohmann::ordered_json jsonOf(const DistributionFigures& times, int64_t figure) {
    return times.count > 0 ? nlohmann::ordered_json(figure) : nlohmann::ordered_json();
}

inline bool hasLevel(const ControlLevels& levels) {
    return std::any_of(levels.begin(), levels.end(), [](uint32_t level) { return level != 0; });
}

// Without the zeros at the end: "[512,640]".
template <typename Levels>
std::string describeLevels(const Levels& levels) {
    const auto last =
            std::find_if(levels.rbegin(), levels.rend(), [](auto level) { return level != 0; });
    return fmt::format("[{}]", fmt::join(levels.begin(), last.base(), ","));
}

// Writes the first ones, and how many are left out. JSON Lines hold more of them.
template <typename Element, typename Write>
void writeFirst(TextOutput out, const std::vector<Element>& elements, uint64_t further,
                const char* noun, Write&& write) {
    constexpr size_t kMax = 20;
    const size_t shown = std::min(elements.size(), kMax);
    std::for_each_n(elements.begin(), shown, write);
    const uint64_t left = elements.size() - shown + further;
    if (left > 0) {
        fmt::format_to(out, "  and {} more\n", countOf(left, noun));
    }
}

}  // namespace desk
