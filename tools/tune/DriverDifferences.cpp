#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "report/CountText.h"
#include "tune/Differences.h"
#include "tune/TextTable.h"

namespace desk {

namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

constexpr const char* kNothing = "-";

TextTable sideBySide() {
    return TextTable({Align::Left, Align::Left, Align::Right, Align::Right});
}

// A heading and the table below it. Empty when the table is.
std::string section(const char* heading, const TextTable& table) {
    return table.isEmpty() ? "" : fmt::format("{}\n{}", heading, table.text());
}

// The value as text. Long arrays lose the zeros at their end.
std::string textOf(const ordered_json& value) {
    if (!value.is_array()) {
        return value.is_string() ? value.get<std::string>() : value.dump();
    }
    ordered_json used = value;
    constexpr size_t kShort = 4;
    while (value.size() > kShort && !used.empty() && used.back() == 0) {
        used.erase(used.size() - 1);
    }
    return used.dump();
}

std::string memberText(const ordered_json& object, const std::string& key) {
    return object.contains(key) ? textOf(object[key]) : kNothing;
}

// The distinct records of a subject, by the line at which each came first.
std::map<uint64_t, ordered_json> recordsOf(const ordered_json& view, const std::string& subject) {
    std::map<uint64_t, ordered_json> records;
    if (view["records"].contains(subject)) {
        for (const ordered_json& sent : view["records"][subject]) {
            records[sent["line"].get<uint64_t>()] = sent;
        }
    }
    return records;
}

template <typename Map>
auto keysOf(const Map& a, const Map& b) {
    std::set<typename Map::key_type> keys;
    for (const Map* map : {&a, &b}) {
        for (const auto& [key, value] : *map) {
            keys.insert(key);
        }
    }
    return keys;
}

void compareRecords(const std::string& subject, const ordered_json* a, const ordered_json* b,
                    TextTable& table) {
    if (a == nullptr || b == nullptr) {
        const auto sent = [](const ordered_json* each) {
            return each != nullptr ? "sent " + countOf((*each)["count"].get<uint64_t>(), "time")
                                   : std::string(kNothing);
        };
        table.add({subject, "", sent(a), sent(b)});
        return;
    }
    for (const auto& [field, value] : (*a)["record"].items()) {
        if (value != (*b)["record"][field]) {
            table.add({subject, field, textOf(value), textOf((*b)["record"][field])});
        }
    }
    if ((*a)["count"] != (*b)["count"]) {
        table.add({subject, "times sent", textOf((*a)["count"]), textOf((*b)["count"])});
    }
}

void compareSubject(const std::string& subject, const ordered_json& a, const ordered_json& b,
                    TextTable& table) {
    const auto recordsOfA = recordsOf(a, subject);
    const auto recordsOfB = recordsOf(b, subject);
    for (const uint64_t line : keysOf(recordsOfA, recordsOfB)) {
        const auto inA = recordsOfA.find(line);
        const auto inB = recordsOfB.find(line);
        const bool isAlone = recordsOfA.size() <= 1 && recordsOfB.size() <= 1;
        compareRecords(isAlone ? subject : fmt::format("{} from line {}", subject, line),
                       inA != recordsOfA.end() ? &inA->second : nullptr,
                       inB != recordsOfB.end() ? &inB->second : nullptr, table);
    }
}

struct SubjectGroup {
    const char* heading;
    std::vector<std::string> prefixes;  // of the subjects' names; none: all other subjects
};

const std::vector<SubjectGroup>& subjectsOfRecords() {
    static const std::vector<SubjectGroup> subjects = {
            {"Registrations", {"init command", "task "}},
            {"Targets of anchors", {"anchor "}},
            {"Critical spans", {"critical span "}},
            {"Merged controls", {}},
    };
    return subjects;
}

size_t placeOf(const std::string& subject) {
    const auto& all = subjectsOfRecords();
    const auto found =
            std::find_if(all.begin(), all.end(), [&subject](const SubjectGroup& subjects) {
                return subjects.prefixes.empty() ||
                       std::any_of(
                               subjects.prefixes.begin(), subjects.prefixes.end(),
                               [&subject](const auto& each) { return subject.starts_with(each); });
            });
    return static_cast<size_t>(found - all.begin());
}

std::string recordDifferences(const ordered_json& a, const ordered_json& b) {
    std::vector<TextTable> tables(subjectsOfRecords().size(), sideBySide());
    std::set<std::string> subjects;
    for (const ordered_json* view : {&a, &b}) {
        for (const auto& [subject, sent] : (*view)["records"].items()) {
            subjects.insert(subject);
        }
    }
    for (const std::string& subject : subjects) {
        compareSubject(subject, a, b, tables[placeOf(subject)]);
    }
    std::string text;
    for (size_t i = 0; i < tables.size(); ++i) {
        text += section(subjectsOfRecords()[i].heading, tables[i]);
    }
    return text;
}

// The objects of one of the summary's lists, by number.
std::map<int, ordered_json> listOf(const ordered_json& view, const char* list, const char* number) {
    std::map<int, ordered_json> objects;
    for (const ordered_json& each : view["summary"][list]) {
        objects[each[number].get<int>()] = each;
    }
    return objects;
}

void compareFigures(const ordered_json& a, const ordered_json& b, const char* list,
                    const char* number, const std::vector<std::string>& figures, TextTable& table) {
    auto ofA = listOf(a, list, number);
    auto ofB = listOf(b, list, number);
    for (const int each : keysOf(ofA, ofB)) {
        for (const std::string& figure : figures) {
            const std::string inA = memberText(ofA[each], figure);
            const std::string inB = memberText(ofB[each], figure);
            if (inA != inB) {
                table.add({fmt::format("{} {}", number, each), figure, inA, inB});
            }
        }
    }
}

void compareFailures(const ordered_json& a, const ordered_json& b, TextTable& table) {
    for (const auto& [operation, calls] : a["summary"]["operations"].items()) {
        const ordered_json& other = b["summary"]["operations"][operation];
        if (calls["failed"] != other["failed"]) {
            table.add({operation, "failed", textOf(calls["failed"]), textOf(other["failed"])});
        }
    }
}

}  // namespace

std::string differencesAtDriver(const ordered_json& a, const ordered_json& b) {
    TextTable targets = sideBySide();
    compareFigures(a, b, "tasks", "task", {"starts", "ends", "overTarget"}, targets);
    compareFigures(a, b, "anchors", "anchor", {"passes", "overLatencyTarget", "overJitterTarget"},
                   targets);
    TextTable failures = sideBySide();
    compareFailures(a, b, failures);
    return recordDifferences(a, b) + section("Runs and passes", targets) +
           section("Calls that returned -1", failures);
}

}  // namespace desk
