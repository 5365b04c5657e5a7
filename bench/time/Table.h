/*
 * The rows of the measurements: what is timed beside what, and what came out.
 */
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench {

// Returns 0 on success.
using Action = int (*)();

// Short enough that both actions meet the same load of the machine, long enough for its clock.
inline constexpr int kCallsAtOnce = 500;

// The times of one repetition, in seconds for kCallsAtOnce calls.
struct Sample {
    double own;
    double beside;
};

struct Row {
    std::string name;
    Action action;
    Action beside;
    std::optional<double> wanted;  // ratio
    std::string remark = {};
    // How many threads act at once. Then time is what passes for all of them; else it is what the
    // measuring thread needs.
    std::optional<int> threads = {};
    std::optional<int> besideThreads = {};
    std::vector<Sample> samples = {};
};

struct Section {
    std::string title;
    std::string besideWhat;
    double unitsPerCall;
    std::vector<Row> rows;
};

void printTable(const std::vector<Section>& sections);
// Throws when the file cannot be written.
void writeJson(const std::vector<Section>& sections, const std::string& path);

}  // namespace bench
