#include "time/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace bench {

namespace {

template <typename Figure>
double medianOf(const Row& row, Figure figure) {
    std::vector<double> figures;
    figures.reserve(row.samples.size());
    for (const Sample& sample : row.samples) {
        figures.push_back(figure(sample));
    }
    std::sort(figures.begin(), figures.end());
    return figures[figures.size() / 2];
}

struct Result {
    double nanoseconds;
    double besideNanoseconds;
    double ratio;
};

Result resultOf(const Section& section, const Row& row) {
    const double scale = 1e9 / kCallsAtOnce / section.unitsPerCall;
    return {medianOf(row, [=](const Sample& sample) { return sample.own * scale; }),
            medianOf(row, [=](const Sample& sample) { return sample.beside * scale; }),
            medianOf(row, [](const Sample& sample) { return sample.own / sample.beside; })};
}

}  // namespace

void printTable(const std::vector<Section>& sections) {
    for (const Section& section : sections) {
        fmt::print("{:<38}{:>10}{:>14}{:>8}{:>8}\n", section.title, "ns", section.besideWhat,
                   "ratio", "wanted");
        for (const Row& row : section.rows) {
            fmt::print("  {:<36}", row.name);
            if (row.samples.empty()) {
                fmt::print("{:>40}", "not measured");
            } else {
                const Result result = resultOf(section, row);
                fmt::print("{:>10.2f}{:>14.2f}{:>8.2f}{:>8}", result.nanoseconds,
                           result.besideNanoseconds, result.ratio,
                           row.wanted ? fmt::format("{:.2f}", *row.wanted) : "");
            }
            fmt::print("{}\n", row.remark.empty() ? "" : "  (" + row.remark + ')');
        }
        fmt::print("\n");
    }
}

void writeJson(const std::vector<Section>& sections, const std::string& path) {
    nlohmann::json rows = nlohmann::json::array();
    for (const Section& section : sections) {
        for (const Row& row : section.rows) {
            nlohmann::json object = {{"section", section.title},
                                     {"name", row.name},
                                     {"beside", section.besideWhat},
                                     {"remark", row.remark}};
            if (row.wanted) {
                object["wantedRatio"] = *row.wanted;
            }
            if (!row.samples.empty()) {
                const Result result = resultOf(section, row);
                object["nanoseconds"] = result.nanoseconds;
                object["besideNanoseconds"] = result.besideNanoseconds;
                object["ratio"] = result.ratio;
            }
            rows.push_back(std::move(object));
        }
    }
    std::ofstream file(path);
    file << rows.dump(2) << '\n';
    if (!file.flush()) {
        throw std::runtime_error(path + ": cannot be written");
    }
}

}  // namespace bench
