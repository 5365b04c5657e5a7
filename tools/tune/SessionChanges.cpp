#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "analysis/Distribution.h"
#include "tune/Differences.h"
#include "tune/TextTable.h"

namespace desk {

namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

constexpr const char* kNoFigure = "-";

// Times of one kind in both sessions.
struct TimesOfBoth {
    uint64_t count[2] = {};
    int64_t p50[2] = {};
    int64_t p90[2] = {};
};

TextTable timesTable() {
    TextTable table({Align::Left, Align::Right, Align::Right, Align::Right, Align::Right,
                     Align::Right, Align::Right, Align::Right, Align::Right, Align::Right});
    table.add({"", "count A", "count B", "p50 us A", "p50 us B", "p90 us A", "p90 us B",
               "change us", "spread us", "change/spread"});
    return table;
}

// The change of the median, and the spread to compare it with: the larger of the distances from p50
// to p90 in both sessions.
void addRow(const std::string& name, const TimesOfBoth& times, TextTable& table) {
    std::vector<std::string> cells = {name, fmt::format("{}", times.count[0]),
                                      fmt::format("{}", times.count[1])};
    for (const int64_t(*figure)[2] : {&times.p50, &times.p90}) {
        for (size_t i = 0; i < 2; ++i) {
            cells.push_back(times.count[i] > 0 ? fmt::format("{}", (*figure)[i]) : kNoFigure);
        }
    }
    if (times.count[0] == 0 || times.count[1] == 0) {
        cells.insert(cells.end(), 3, kNoFigure);
    } else {
        const int64_t change = times.p50[1] - times.p50[0];
        const int64_t spread = std::max(times.p90[0] - times.p50[0], times.p90[1] - times.p50[1]);
        cells.push_back(fmt::format("{:+}", change));
        cells.push_back(fmt::format("{}", spread));
        cells.push_back(spread > 0 ? fmt::format("{:+.2f}", static_cast<double>(change) /
                                                                    static_cast<double>(spread))
                                   : kNoFigure);
    }
    table.add(std::move(cells));
}

// The keys of one kind of times in the objects of one of the summary's lists.
struct TimeKeys {
    const char* list;
    const char* number;
    const char* what;
    const char* count;
    const char* p50;
    const char* p90;
};

constexpr TimeKeys kTimes[] = {
        {"tasks", "task", "run", "ends", "p50RunUs", "p90RunUs"},
        {"anchors", "anchor", "latency", "passes", "p50LatencyUs", "p90LatencyUs"},
        {"anchors", "anchor", "jitter", "latencyChanges", "p50JitterUs", "p90JitterUs"},
};

void addTimes(const ordered_json* const views[2], const TimeKeys& keys, TextTable& table) {
    std::map<int, TimesOfBoth> all;
    std::map<int, std::string> names;
    for (size_t i = 0; i < 2; ++i) {
        for (const ordered_json& each : (*views[i])["summary"][keys.list]) {
            const int number = each[keys.number].get<int>();
            TimesOfBoth& times = all[number];
            names[number] = each.contains("name") ? " " + each["name"].get<std::string>() : "";
            if (!each[keys.p50].is_null()) {
                times.count[i] = each[keys.count].get<uint64_t>();
                times.p50[i] = each[keys.p50].get<int64_t>();
                times.p90[i] = each[keys.p90].get<int64_t>();
            }
        }
    }
    for (const auto& [number, times] : all) {
        addRow(fmt::format("{} {}{} {}", keys.number, number, names[number], keys.what), times,
               table);
    }
}

// How long the controls of each category were active, among those that the summary lists.
void addBoosts(const ordered_json* const views[2], TextTable& table) {
    std::map<int, Distribution> durations[2];
    std::set<int> categories;
    for (size_t i = 0; i < 2; ++i) {
        for (const ordered_json& control : (*views[i])["summary"]["boosts"]["controls"]) {
            const int category = control["category"].get<int>();
            categories.insert(category);
            durations[i][category].add(control["untilUs"].get<int64_t>() -
                                       control["fromUs"].get<int64_t>());
        }
    }
    for (const int category : categories) {
        TimesOfBoth times;
        for (size_t i = 0; i < 2; ++i) {
            const DistributionFigures figures = durations[i][category].figures();
            times.count[i] = figures.count;
            times.p50[i] = figures.p50Us;
            times.p90[i] = figures.p90Us;
        }
        addRow(fmt::format("boost of category {}", category), times, table);
    }
}

void addShare(const std::string& name, const int64_t (&us)[2], const int64_t (&whole)[2],
              TextTable& table) {
    const auto share = [](int64_t part, int64_t all) {
        return all > 0 ? 100 * static_cast<double>(part) / static_cast<double>(all) : 0;
    };
    const double percents[] = {share(us[0], whole[0]), share(us[1], whole[1])};
    constexpr double kPlaces = 10;
    const double change = std::round(kPlaces * (percents[1] - percents[0])) / kPlaces;
    table.add({name, fmt::format("{:.1f} %", percents[0]), fmt::format("{:.1f} %", percents[1]),
               fmt::format("{:+.1f}", change + 0.0)});
}

// The share of each session in which each level was in force.
std::string shareChanges(const ordered_json* const views[2]) {
    TextTable table({Align::Left, Align::Right, Align::Right, Align::Right});
    table.add({"", "A", "B", "change"});
    int64_t recorded[2] = {};
    int64_t active[2] = {};
    int64_t overlap[2] = {};
    std::map<int, int64_t[2]> levels;
    for (size_t i = 0; i < 2; ++i) {
        const ordered_json& summary = (*views[i])["summary"];
        recorded[i] = summary["recordedUs"].get<int64_t>();
        active[i] = summary["boosts"]["activeUs"].get<int64_t>();
        overlap[i] = summary["boosts"]["overlapUs"].get<int64_t>();
        for (const ordered_json& level : summary["boosts"]["percentLevels"]) {
            levels[level["percentLevel"].get<int>()][i] = level["timeUs"].get<int64_t>();
        }
    }
    addShare("a control is active", active, recorded, table);
    addShare("two or more are", overlap, recorded, table);
    for (const auto& [level, us] : levels) {
        addShare(fmt::format("merged percent level {}", level), us, recorded, table);
    }
    return "Share of the session\n" + table.text();
}

}  // namespace

std::string changesBetween(const ordered_json& a, const ordered_json& b) {
    const ordered_json* const views[] = {&a, &b};
    TextTable times = timesTable();
    for (const TimeKeys& keys : kTimes) {
        addTimes(views, keys, times);
    }
    addBoosts(views, times);
    return "Times\n" + times.text() + shareChanges(views);
}

}  // namespace desk
