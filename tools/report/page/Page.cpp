#include "report/page/Page.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include "report/page/PageParts.h"

namespace desk {

namespace {

using Output = std::back_insert_iterator<std::string>;

std::string quote(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string_view nameOf(RowKind kind) {
    switch (kind) {
        case RowKind::Anchor:
            return "anchor";
        case RowKind::Task:
            return "task";
        case RowKind::Span:
            return "span";
    }
    return "";
}

std::string_view nameOf(EventKind kind) {
    switch (kind) {
        case EventKind::Finding:
            return "finding";
        case EventKind::Refusal:
            return "refusal";
        case EventKind::Failure:
            return "failure";
    }
    return "";
}

// Writes a JSON array; `write` writes each element.
template <typename Elements, typename Write>
void writeArray(Output out, const Elements& elements, Write&& write) {
    const char* separator = "[";
    for (const auto& element : elements) {
        fmt::format_to(out, "{}", separator);
        write(element);
        separator = ",";
    }
    fmt::format_to(out, "{}]", separator[0] == '[' ? "[" : "");
}

void writeIntervals(Output out, const IntervalRow& row) {
    std::vector<PageInterval> exact = row.exact();
    std::ranges::sort(exact, {}, &PageInterval::atUs);
    fmt::format_to(out, "\"exact\":");
    writeArray(out, exact, [out](const PageInterval& each) {
        fmt::format_to(out, "[{},{},{}]", each.atUs, each.durationUs, each.targetUs);
    });
    std::vector<size_t> filled;
    for (size_t place = 0; place < row.cells().size(); ++place) {
        if (row.cells()[place].count > 0) {
            filled.push_back(place);
        }
    }
    fmt::format_to(out, ",\"cellUs\":{},\"cells\":", row.cellUs());
    writeArray(out, filled, [out, &row](size_t place) {
        const IntervalRow::Cell& cell = row.cells()[place];
        fmt::format_to(out, "[{},{},{},{},{}]", place, cell.count, cell.totalUs, cell.longestUs,
                       cell.over);
    });
}

void writeRow(Output out, const PageRow& row) {
    fmt::format_to(out, "{{\"kind\":\"{}\",\"thread\":{},\"number\":{},\"name\":{},",
                   nameOf(row.kind), quote(row.thread), row.number, quote(row.name));
    writeIntervals(out, row.intervals);
    fmt::format_to(out, "}}\n");
}

void writeEvents(Output out, const PageRecorder& recorder) {
    fmt::format_to(out, ",\"eventCounts\":{{");
    for (const EventKind kind : {EventKind::Finding, EventKind::Refusal, EventKind::Failure}) {
        fmt::format_to(out, "{}\"{}\":{}", kind == EventKind::Finding ? "" : ",", nameOf(kind),
                       recorder.countOf(kind));
    }
    fmt::format_to(out, "}},\"events\":");
    writeArray(out, recorder.events(), [out](const PageEvent& event) {
        fmt::format_to(
                out,
                "{{\"kind\":\"{}\",\"atUs\":{},\"line\":{},\"thread\":{},\"what\":{},\"text\":{}}}",
                nameOf(event.kind), event.atUs, event.line, quote(event.thread), quote(event.what),
                quote(event.text));
    });
}

void writeLevels(Output out, const LevelSeries& levels) {
    fmt::format_to(out, ",\"levelsLeftOut\":{},\"levels\":", levels.leftOut());
    writeArray(out, levels.changes(), [out](const LevelChange& change) {
        fmt::format_to(out, "[{},{},{}]", change.atUs, change.percentLevel,
                       fmt::join(change.uclampLevels, ","));
    });
}

// How the run times of each task are distributed, by the task's place in the summary.
void writeRunBars(Output out, const std::vector<TaskFigures>& tasks) {
    fmt::format_to(out, ",\"runBars\":");
    writeArray(out, tasks, [out](const TaskFigures& task) {
        fmt::format_to(out, "{{\"fromUs\":{},\"widthUs\":{},\"counts\":[{}],\"above\":{}}}",
                       task.runBars.fromUs, task.runBars.widthUs,
                       fmt::join(task.runBars.counts, ","), task.runBars.above);
    });
}

// Limits the length of a list. Returns how many elements that leaves out.
template <typename Element>
size_t cut(std::vector<Element>& list) {
    constexpr size_t kMost = 500;
    const size_t kept = std::min(list.size(), kMost);
    const size_t left = list.size() - kept;
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(kept), list.end());
    return left;
}

// Limits the lists whose length depends on the session.
void writeSummary(Output out, Summary summary) {
    SessionFigures& figures = summary.figures;
    std::erase_if(summary.driver.tasks, [](const TaskSnapshot& task) { return task.isRegistered; });
    const size_t anchors = cut(figures.anchors);
    const size_t runs = cut(figures.activeRuns);
    const size_t spans = cut(figures.activeSpans);
    const size_t tasks = cut(summary.driver.tasks);
    const size_t findings = cut(summary.driver.findings);
    fmt::format_to(out, "\"report\":{}", formatSummaryJson(summary));
    fmt::format_to(out,
                   ",\"leftOut\":{{\"anchors\":{},\"runs without an end\":{},"
                   "\"critical spans without an end\":{},\"tasks that were never accepted\":{},"
                   "\"findings\":{}}}",
                   anchors, runs, spans, tasks, findings);
}

std::string formatData(const Summary& summary, const PageRecorder& recorder) {
    std::string data;
    const Output out(data);
    fmt::format_to(out, "{{\"version\":\"" VELK_VERSION "\",");
    writeSummary(out, summary);
    fmt::format_to(out, ",\"firstUs\":{},\"intervalsWithoutRow\":{},\"rows\":", recorder.firstUs(),
                   recorder.intervalsWithoutRow());
    writeArray(out, recorder.rows(), [out](const PageRow& row) { writeRow(out, row); });
    writeRunBars(out, summary.figures.tasks);
    writeLevels(out, recorder.levels());
    writeEvents(out, recorder);
    fmt::format_to(out, "}}");
    return data;
}

// In a script element only "<" can begin markup, and JSON has it only within strings.
std::string withoutMarkup(const std::string& json) {
    std::string text;
    text.reserve(json.size());
    for (const char character : json) {
        if (character == '<') {
            text += "\\u003c";
        } else {
            text += character;
        }
    }
    return text;
}

}  // namespace

std::string formatPage(const Summary& summary, const PageRecorder& recorder) {
    const std::string data = withoutMarkup(formatData(summary, recorder));
    std::string page;
    // In the order of the template.
    std::string_view left = kPageTemplate;
    for (const auto& [mark, part] :
         {std::pair<std::string_view, std::string_view>{"/* style */", kPageStyle},
          {"\"data\"", data},
          {"/* charts */", kPageCharts},
          {"/* script */", kPageScript}}) {
        const size_t place = left.find(mark);
        page.append(left.substr(0, place)).append(part);
        left.remove_prefix(place + mark.size());
    }
    return page.append(left);
}

}  // namespace desk
