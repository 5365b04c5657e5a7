/*
 * What velk-replay prints and writes.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ReplayFixture.h"
#include "ToolRun.h"

namespace desk {
namespace {

using nlohmann::json;

constexpr const char* kSession =
        R"({"at_us": 0, "thread": "service", "call": "init", "scenario": 6, "customization": 9, "queryMaxEfficientFreq": true, "tuningParam2": 80}
{"at_us": 1000, "thread": "preview", "call": "notifyTaskStart", "key": "0x10", "task": 5, "groupHead": 0, "extraFlag1": 2}
{"at_us": 1500, "thread": "video", "call": "notifyTaskStart", "key": "0x20", "task": 3}
{"at_us": 2000, "thread": "service", "call": "notifyCamFps", "fps": 29.97}
{"at_us": 2100, "thread": "service", "call": "notifyVSync"}
{"at_us": 2200, "thread": "video", "call": "notifySingleShotCriticalTaskStart", "task": 3}
{"at_us": 2300, "thread": "preview", "call": "notifyTaskEnd", "key": "0x10", "task": 5}
{"at_us": 2400, "thread": "preview", "call": "notifyTaskEnd", "key": "0x99", "task": 5}
{"at_us": 2500, "thread": "video", "call": "notifyTaskStart", "key": "0x10", "task": 5}
{"at_us": 2600, "thread": "service", "call": "uninit"}
)";

constexpr const char* kTable =
        R"(     time ms  thread        command        verdict      fields
       0.000  service       open           accepted
       0.000  service       init           accepted     driverParam=0 clusterLevels=[10,20,30] maxEfficientFreqs=[1400000,2000000,2600000] tuningParam1=10 tuningParam2=80
       0.000  service       singleShot     accepted     tid=1 uclampLevels=[] percentLevel=-1 requestValue=-1 auxValue=0 rangeLevels1=[11,21,31] rangeLevels2=[] rangeLevels3=[] isReset=0 auxFlag=0 criticalTaskIds=[] criticalTaskUclamps=[] limits=[] passFlag=0 sharedFlag=0 extraValues=[-1,-1,-1]
       1.000  preview       taskInit       accepted     uniqueTaskId=1 defaultUclamp=400 targetTime=5 taskSpecValue=7 isVIPTask=1 extraFlag0=0 extraFlag1=2 taskName="RENDER"
       1.000  preview       taskStart      accepted     tid=2 uniqueTaskId=1
       1.500  video         taskInit       accepted     uniqueTaskId=2 defaultUclamp=320 targetTime=900 taskSpecValue=-1 isVIPTask=0 extraFlag0=0 extraFlag1=0 taskName="SCALE"
       1.500  video         taskStart      accepted     tid=3 uniqueTaskId=2
       2.000  service       camFps         accepted     fps=29
       2.100  service       vsync          accepted
       2.200  video         criticalStart  accepted     tid=3 criticalValue=320
       2.300  preview       taskEnd        accepted     tid=2 uniqueTaskId=1
       2.400  preview       -              returned -1  notifyTaskEnd(key="0x99", task=5)  <- line 8  <- notifyTaskEnd should not called before notifyTaskStart,curTask: 5
       2.500  video         taskStart      accepted     tid=3 uniqueTaskId=1
       2.600  service       uninit         accepted
       2.600  service       close          accepted
)";

constexpr const char* kSummary =
        R"(Session standard input
  10 calls on 3 threads, 0.003 s recorded, played in 0

Commands                accepted     noted   refused  injected
     open                      1         0         0         0
  27 init                      1         0         0         0
  28 taskInit                  2         0         0         0
  29 taskStart                 3         0         0         0
  30 taskEnd                   1         0         0         0
  32 uninit                    1         0         0         0
  33 vsync                     1         0         0         0
  34 camFps                    1         0         0         0
  35 singleShot                1         0         0         0
  36 criticalStart             1         0         0         0
     close                     1         0         0         0

Tasks              starts    ended  target us   p50 us   p90 us   p99 us   max us  over target      %    busy ms  threads
   3 SCALE              1        0        900        -        -        -        -            0    0.0      0.000  video
   5 RENDER             2        1          5     1300     1300     1300     1300            1  100.0      1.300  preview, video

Critical spans
  0 ended, 0.000 ms in all, 0.000 ms the longest, 1 open at the end

Frames              count per second   p50 us   p90 us   p99 us   max us       missed
  vsync                 1          -        -        -        -        -            0

Frame rates told      from ms     until ms  ends per second
  29                    2.000        2.600  -

Registrations
  2 tasks registered, 0 of them after a refusal; 0 refusals

Calls that returned -1                      injected  unexpected
  notifyTaskEnd                                    0           1  first in line 8

Still active at the end
  video runs task 5 RENDER since 2.500 ms
  video runs task 3 SCALE since 1.500 ms
  video is in a critical span of value 320 since 2.200 ms
)";

TEST_F(Replay, PrintsEveryCommandAndTheSummary) {
    const ToolOutcome outcome = runTool(with({}), kSession);
    EXPECT_EQ(normalise(outcome.out), std::string(kTable) + "\n" + kSummary);
    EXPECT_EQ(outcome.err, "velk-replay: 1 call returned -1 unexpectedly, the first in line 8\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Replay, PrintsJsonLinesThatEndWithTheSummary) {
    const ToolOutcome outcome =
            runTool(with({"--format", "jsonl", "--driver", "29=EINVAL*1"}), kSession);
    std::vector<json> rows;
    std::istringstream lines(normalise(outcome.out));
    for (std::string line; std::getline(lines, line);) {
        rows.push_back(json::parse(line));
    }
    ASSERT_EQ(rows.size(), 17U);
    EXPECT_EQ(rows[0], json::parse(R"({"at_us": 0, "line": 1, "thread": "service", "call": "init",
        "command": "open", "accepted": true})"));
    EXPECT_EQ(rows[3], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "command": "taskInit", "number": 28, "accepted": true,
        "fields": {"uniqueTaskId": 1, "defaultUclamp": 400, "targetTime": 5, "taskSpecValue": 7,
                   "isVIPTask": 1, "extraFlag0": 0, "extraFlag1": 2, "taskName": "RENDER"}})"));
    EXPECT_EQ(rows[4], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "command": "taskStart", "number": 29, "accepted": false,
        "errno": "EINVAL", "injected": true, "fields": {"tid": 2, "uniqueTaskId": 1}})"));
    EXPECT_EQ(rows[5], json::parse(R"({"at_us": 1000, "line": 2, "thread": "preview",
        "call": "notifyTaskStart", "returned": -1, "injected": true,
        "arguments": {"key": "0x10", "task": 5, "groupHead": 0, "extraFlag1": 2}})"));
    EXPECT_EQ(rows[12].at("message"),
              "notifyTaskEnd should not called before notifyTaskStart,curTask: 5");

    const json& summary = rows.back().at("summary");
    EXPECT_EQ(summary.at("calls"), 10);
    EXPECT_EQ(summary.at("commands").at("taskStart"),
              json::parse(R"({"accepted": 2, "noted": 0, "refused": 0, "refusedInjected": 1})"));
    EXPECT_EQ(
            summary.at("operations").at("notifyTaskEnd"),
            json::parse(R"({"calls": 2, "failedInjected": 0, "failed": 1, "firstFailedLine": 8})"));
    EXPECT_EQ(summary.at("operations").at("notifyTaskStart"),
              json::parse(R"({"calls": 3, "failedInjected": 1, "failed": 0})"));
    EXPECT_EQ(summary.at("tasks")[1], json::parse(R"({"task": 5, "name": "RENDER", "starts": 1,
                  "repeatedStarts": 0, "ends": 0, "targetTimeUs": 5, "totalRunUs": 0,
                  "p50RunUs": null, "p90RunUs": null, "p99RunUs": null, "longestRunUs": 0,
                  "overTarget": 0, "overTargetPercent": 0.0, "threads": ["video"]})"));
    EXPECT_EQ(summary.at("active").at("spans"),
              json::parse(R"([{"thread": "video", "criticalValue": 320, "sinceUs": 2200}])"));
    EXPECT_EQ(outcome.status, 1);
}

struct FilterCase {
    const char* filter;
    const char* rows;  // thread and command of each
};

TEST_F(Replay, AFilterLeavesTheRowsThatAreAskedFor) {
    for (const FilterCase& c : {
                 FilterCase{"command=camFps, command=33", "service camFps, service vsync, "},
                 {"command=open,thread=video", ""},
                 {"task=RENDER, thread=video", "video taskStart, "},
                 {"task=3", "video taskInit, video taskStart, video criticalStart, "},
                 {"failures", "service vsync, service -, preview -, "},
                 {"failures,thread=preview", "preview -, "},
                 {"failures,command=vsync", "service vsync, "},
         }) {
        const ToolOutcome outcome =
                runTool(with({"--filter", c.filter, "--driver", "vsync=EIO"}), kSession);
        std::istringstream lines(outcome.out);
        std::string rows;
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line) && !line.empty()) {
            std::istringstream words(line);
            std::string time;
            std::string thread;
            std::string command;
            words >> time >> thread >> command;
            rows += thread + " " + command + ", ";
        }
        EXPECT_EQ(rows, c.rows) << c.filter;
        EXPECT_NE(outcome.out.find("  10 calls on 3 threads"), std::string::npos);
    }
}

// Slices and sections of every thread lie within one another, and nothing stays open.
TEST_F(Replay, WritesATraceWhoseSlicesNest) {
    const std::string overlapping =
            std::string(kInit) +
            R"({"at_us": 1, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3}
{"at_us": 2, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 3}
{"at_us": 5, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 5}
{"at_us": 9, "thread": "p", "call": "notifyTaskEnd", "key": "0x1", "task": 3}
{"at_us": 9, "thread": "p", "call": "notifyVSync"}
{"at_us": 9, "thread": "p", "call": "notifyVSync"}
{"at_us": 9, "thread": "p", "call": "notifyCamFps", "fps": 30}
{"at_us": 9, "thread": "p", "call": "notifySingleShotControl", "control": {"percentLevel": 70, "uclampLevels": [0, 700]}}
{"at_us": 9, "thread": "p", "call": "notifyAnchorPointStart", "anchor": 1, "serial": 7}
{"at_us": 9, "thread": "p", "call": "notifyAnchorPointStart", "anchor": 1, "serial": 8}
{"at_us": 9, "thread": "p", "call": "notifySingleShotCriticalTaskStart", "task": 3}
{"at_us": 12, "thread": "q", "call": "notifyAnchorPointEnd", "anchor": 1, "serial": 7}
)";
    EXPECT_EQ(runTool(with({"-q", "--trace", path("trace.json"), "--driver", "vsync=EIO*1",
                            "--property", "vendor.debug.velk.latencySpec=100900"}),
                      overlapping)
                      .status,
              0);
    const json trace = json::parse(std::ifstream(path("trace.json")));

    std::map<int, std::vector<std::string>> open;
    std::map<int, double> last;
    std::vector<std::string> tasks;
    std::vector<std::string> others;
    for (const json& event : trace.at("traceEvents")) {
        const std::string phase = event.at("ph");
        if (phase == "C" || phase == "i" || phase == "b" || phase == "e") {
            others.push_back(event.at("name").get<std::string>() +
                             event.value("args", json()).dump());
        }
        if (phase != "B" && phase != "E") {
            continue;
        }
        const int thread = event.at("tid");
        EXPECT_GE(event.at("ts").get<double>(), last[thread]);
        last[thread] = event.at("ts");
        if (phase == "B") {
            open[thread].push_back(event.at("name"));
        } else {
            ASSERT_FALSE(open[thread].empty());
            EXPECT_EQ(event.at("name"), open[thread].back());
        }
        const std::string& name = open[thread].back();
        if (!name.starts_with("VELK::")) {
            tasks.push_back(phase + " " + name);
        } else if (name == "VELK::notifyVSync" && phase == "B") {
            EXPECT_EQ(event.at("args").dump(), R"({"command 1: vsync":""})");
        }
        if (name == "RENDER") {
            EXPECT_EQ(event.at("args").dump(),
                      R"({"defaultUclamp":400,"targetTime":5,"uniqueTaskId":2})");
        }
        if (phase == "E") {
            open[thread].pop_back();
        }
    }
    for (const auto& [thread, slices] : open) {
        EXPECT_TRUE(slices.empty()) << slices.front();
    }
    EXPECT_EQ(tasks, (std::vector<std::string>{"B SCALE", "B SCALE", "B RENDER", "E RENDER",
                                               "E SCALE", "E SCALE", "B RENDER", "E RENDER"}));
    EXPECT_EQ(others, (std::vector<std::string>{
                              R"(vsync refused{"errno":"EIO"})", "notifyVSync returned -1{}",
                              "vsync{}", R"(fps{"fps":30})", R"(percentLevel{"percentLevel":70})",
                              R"(uclampLevel 1{"uclampLevel 1":700})",
                              R"(anchor 1{"jitterTarget":0,"latencyTarget":900,"serial":7})",
                              R"(anchor 1{"jitterTarget":0,"latencyTarget":900,"serial":8})",
                              R"(critical span of p{"criticalValue":320})", "anchor 1{}",
                              R"(anchor 1{"end":"none"})", R"(critical span of p{"end":"none"})"}));
    EXPECT_EQ(trace.at("otherData").at("session"), "standard input");
}

TEST_F(Replay, TraceHoldsEachOfManyRunsOfAThreadOnce) {
    std::string session = kInit;
    for (const char* call : {"notifyTaskStart", "notifyTaskEnd"}) {
        for (int key = 1; key <= 100; ++key) {
            session += json{{"at_us", 9},
                            {"thread", "p"},
                            {"call", call},
                            {"key", "0x" + std::to_string(key)},
                            {"task", 5}}
                               .dump() +
                       '\n';
        }
    }
    EXPECT_EQ(runTool(with({"-q", "--trace", path("trace.json")}), session).status, 0);
    const json trace = json::parse(std::ifstream(path("trace.json")));
    std::map<std::string, std::string> asynchronous;  // the phases, by id
    size_t nested = 0;
    for (const json& event : trace.at("traceEvents")) {
        if (event.contains("id")) {
            asynchronous[event.at("id")] += event.at("ph");
        }
        nested += event.at("ph") == "B" && event.at("name") == "RENDER" ? 1U : 0U;
    }
    EXPECT_EQ(asynchronous.size(), 84U);
    EXPECT_EQ(asynchronous.at("run of 100 by 2"), "be");
    EXPECT_EQ(nested, 16U + 15 * 16 / 2);  // each end cuts those within it
}

// The driver forgets runs by an init too, where the uninit before it was refused.
TEST_F(Replay, TraceEndsRunsThatAnInitFindsOpen) {
    const std::string run = std::string(kInit) +
                            R"({"at_us": 0, "thread": "p", "call": "notifyTaskStart", )"
                            R"("key": "0x1", "task": 5})"
                            "\n"
                            R"({"at_us": 0, "thread": "s", "call": "uninit"})"
                            "\n";
    runTool(with({"-q", "--trace", path("trace.json"), "--driver", "uninit=EIO*1"}), run + run);
    const json trace = json::parse(std::ifstream(path("trace.json")));
    std::string phases;
    for (const json& event : trace.at("traceEvents")) {
        phases += event.at("name") == "RENDER" ? event.at("ph").get<std::string>() : "";
    }
    EXPECT_EQ(phases, "BEBE");
}

// Also while every command takes far longer than the time between the recorded calls.
TEST_F(Replay, TraceAndSummaryAgreeToTheMicrosecond) {
    const std::string session =
            std::string(kInit) +
            R"({"at_us": 7, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 5}
{"at_us": 8, "thread": "q", "call": "notifyTaskStart", "key": "0x1", "task": 3}
{"at_us": 9, "thread": "q", "call": "notifyCamFps", "fps": 30}
{"at_us": 9, "thread": "q", "call": "notifySingleShotControl", "control": {"percentLevel": 70}}
{"at_us": 20, "thread": "p", "call": "notifyTaskEnd", "key": "0x1", "task": 5}
{"at_us": 21, "thread": "p", "call": "notifyTaskStart", "key": "0x1", "task": 5}
{"at_us": 30, "thread": "s", "call": "notifyTaskEnd", "key": "0x1", "task": 3}
{"at_us": 1031, "thread": "p", "call": "notifyTaskEnd", "key": "0x1", "task": 5}
{"at_us": 1031, "thread": "s", "call": "uninit"}
)";
    const ToolOutcome outcome = runTool(with({"-q", "--format", "jsonl", "--driver", "slow=3ms",
                                              "--trace", path("trace.json")}),
                                        session);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json trace = json::parse(std::ifstream(path("trace.json")));

    std::map<int, std::vector<json>> open;
    std::map<std::string, std::pair<double, double>> total;  // and longest
    std::map<std::string, int> counters;
    for (const json& event : trace.at("traceEvents")) {
        const std::string phase = event.at("ph");
        if (phase == "B") {
            open[event.at("tid")].push_back(event);
        } else if (phase == "E") {
            std::vector<json>& slices = open.at(event.at("tid"));
            auto& [sum, longest] = total[slices.back().at("name")];
            const double us = event.at("ts").get<double>() - slices.back().at("ts").get<double>();
            sum += us;
            longest = std::max(longest, us);
            slices.pop_back();
        } else if (phase == "C") {
            counters[event.at("name")] = event.at("args").at(event.at("name").get<std::string>());
        }
    }
    EXPECT_EQ(counters, (std::map<std::string, int>{{"fps", 0}, {"percentLevel", 0}}));
    const json tasks = json::parse(outcome.out).at("summary").at("tasks");
    ASSERT_EQ(tasks.size(), 2U);
    EXPECT_EQ(tasks[1].at("totalRunUs"), 13 + 1010);
    for (const json& task : tasks) {
        EXPECT_EQ(total.at(task.at("name")),
                  (std::pair<double, double>(task.at("totalRunUs"), task.at("longestRunUs"))));
    }
}

}  // namespace
}  // namespace desk
