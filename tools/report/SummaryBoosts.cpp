/*
 * Merged levels and single-shot controls in a summary.
 */
#include <fmt/ranges.h>

#include "report/Share.h"
#include "report/SummaryParts.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

using nlohmann::ordered_json;

ordered_json endToJson(ControlEnd end) {
    switch (end) {
        case ControlEnd::Reset:
            return "reset";
        case ControlEnd::Uninit:
            return "uninit";
        default:
            return nullptr;
    }
}

const char* describeEnd(ControlEnd end) {
    switch (end) {
        case ControlEnd::Reset:
            return "reset";
        case ControlEnd::Uninit:
            return "never reset before uninit";
        default:
            return "never reset";
    }
}

ordered_json controlsToJson(const std::vector<ControlActivation>& controls) {
    ordered_json list = ordered_json::array();
    for (const ControlActivation& control : controls) {
        list.push_back({{"category", control.category},
                        {"thread", control.thread},
                        {"call", control.call},
                        {"line", control.line},
                        {"fromUs", control.fromUs},
                        {"untilUs", control.untilUs},
                        {"end", endToJson(control.end)},
                        {"percentLevel", control.percentLevel ? ordered_json(*control.percentLevel)
                                                              : ordered_json()},
                        {"uclampLevels", control.uclampLevels},
                        {"criticalTaskUclamps", control.criticalTaskUclamps},
                        {"overlaps", control.overlaps}});
    }
    return list;
}

std::string describeValues(const ControlActivation& control) {
    std::vector<std::string> parts;
    if (control.percentLevel) {
        parts.push_back(fmt::format("percentLevel={}", *control.percentLevel));
    }
    if (!control.uclampLevels.empty()) {
        parts.push_back(fmt::format("uclampLevels={}", describeLevels(control.uclampLevels)));
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        parts.push_back(fmt::format("task {}: {}", task, uclamp));
    }
    return fmt::format("{}", fmt::join(parts, " "));
}

void writeLevels(TextOutput out, const LevelFigures& levels, int64_t recordedUs) {
    const auto writeRow = [out, recordedUs](const std::string& name, int64_t timeUs) {
        const auto part = static_cast<uint64_t>(timeUs);
        fmt::format_to(out, "  {:<30} {:>14.3f} {:>6.1f}\n", name, milliseconds(timeUs),
                       percentOf(part, static_cast<uint64_t>(recordedUs)));
    };
    fmt::format_to(out, "\n{:<32} {:>14} {:>6}\n", "Boosts", "time ms", "%");
    for (const auto& [percent, timeUs] : levels.percentLevels) {
        writeRow(percent == 0 ? "no percent level" : fmt::format("percent level {}", percent),
                 timeUs);
    }
    for (const auto& [uclamps, timeUs] : levels.uclampLevels) {
        writeRow(
                hasLevel(uclamps) ? "uclamp levels " + describeLevels(uclamps) : "no uclamp levels",
                timeUs);
    }
    if (levels.furtherLevelsUs > 0) {
        writeRow("further uclamp levels", levels.furtherLevelsUs);
    }
}

void writeControls(TextOutput out, const ControlFigures& controls, const char* unit) {
    if (controls.activations + controls.resets == 0) {
        return;
    }
    fmt::format_to(out,
                   "  {} activated, at most {} at once, {:.3f} ms with more than one; {}, {} of "
                   "them without a control; {} never reset\n",
                   countOf(controls.activations, "control"), controls.mostAtOnce,
                   milliseconds(controls.overlapUs), countOf(controls.resets, "reset"),
                   controls.unmatchedResets, controls.neverReset);
    if (controls.list.empty()) {
        return;
    }
    fmt::format_to(out, "\n{:<14} {:>8} {:>12} {:>12} {:>8}  {:<12}  {:<25}  {}\n", "Controls",
                   "category", "from ms", "ms", "overlaps", "thread", "ended by", "asks for");
    writeFirst(out, controls.list, controls.further, "control",
               [out, unit](const ControlActivation& control) {
                   fmt::format_to(out,
                                  "  {:<12} {:>8} {:>12.3f} {:>12.3f} {:>8}  {:<12}  {:<25}  {}\n",
                                  fmt::format("{} {}", unit, control.line), control.category,
                                  milliseconds(control.fromUs),
                                  milliseconds(control.untilUs - control.fromUs), control.overlaps,
                                  printableText(control.thread), describeEnd(control.end),
                                  describeValues(control));
               });
}

}  // namespace

ordered_json boostsToJson(const SessionFigures& figures) {
    const LevelFigures& levels = figures.levels;
    const ControlFigures& controls = figures.controls;
    ordered_json percents = ordered_json::array();
    for (const auto& [percent, timeUs] : levels.percentLevels) {
        percents.push_back({{"percentLevel", percent}, {"timeUs", timeUs}});
    }
    ordered_json uclamps = ordered_json::array();
    for (const auto& [vector, timeUs] : levels.uclampLevels) {
        uclamps.push_back({{"uclampLevels", vector}, {"timeUs", timeUs}});
    }
    return {{"percentLevels", percents},
            {"uclampLevels", uclamps},
            {"furtherUclampLevelsUs", levels.furtherLevelsUs},
            {"activations", controls.activations},
            {"resets", controls.resets},
            {"unmatchedResets", controls.unmatchedResets},
            {"neverReset", controls.neverReset},
            {"mostAtOnce", controls.mostAtOnce},
            {"activeUs", controls.activeUs},
            {"overlapUs", controls.overlapUs},
            {"controls", controlsToJson(controls.list)},
            {"furtherControls", controls.further}};
}

ordered_json unresetToJson(const UnresetControls& unreset) {
    return {{"controls", controlsToJson(unreset.controls)},
            {"furtherControls", unreset.furtherControls},
            {"criticalTaskUclamps", unreset.taskUclamps}};
}

void writeBoosts(TextOutput out, const SessionFigures& figures, const char* unit) {
    const LevelFigures& levels = figures.levels;
    const bool isBoosted = levels.percentLevels.size() + levels.uclampLevels.size() > 2;
    if (isBoosted || figures.controls.activations + figures.controls.resets > 0) {
        writeLevels(out, levels, figures.recordedUs);
        writeControls(out, figures.controls, unit);
    }
}

void writeUnreset(TextOutput out, const UnresetControls& unreset, const char* unit) {
    writeFirst(out, unreset.controls, unreset.furtherControls, "control",
               [out, unit](const ControlActivation& control) {
                   fmt::format_to(
                           out, "  control of category {} by {} in {} {} since {:.3f} ms: {}\n",
                           control.category, printableText(control.thread), unit, control.line,
                           milliseconds(control.fromUs), describeEnd(control.end));
               });
    for (const auto& [task, uclamp] : unreset.taskUclamps) {
        fmt::format_to(out, "  controls ask for uclamp {} of task {}\n", uclamp, task);
    }
}

}  // namespace desk
