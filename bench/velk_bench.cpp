/*
 * Times every operation of the library beside the system calls that its record needs anyway, and
 * what its users would otherwise do beside that. The rows of the table are the measurements: each
 * is two actions, timed alternately, and the ratio of their medians.
 */
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "foundation/CommandTable.h"
#include "platform/StubPlatform.h"
#include "time/Alternatives.h"
#include "time/DisabledSites.h"

namespace {

// Returns 0 on success.
using Action = int (*)();

// --- Actions -------------------------------------------------------------------------------------

constexpr int kTask = bench::kFirstTask;
constexpr int kRunningTask = bench::kFirstTask + 1;  // on the measuring thread, all the time
const char gKey = 0;
const int gNodeFd = open(VELK_NODE_PATH, O_RDONLY | O_CLOEXEC);

int bareIoctl() {
    VELK_TASK_PARAM record{};
    return ioctl(gNodeFd, VELK_IOC_TASK_START, &record);
}

int bareIoctlWithThreadId() {
    VELK_TASK_PARAM record{};
    record.tid = static_cast<uint32_t>(gettid());
    return ioctl(gNodeFd, VELK_IOC_TASK_START, &record);
}

int twoBareIoctlsWithThreadId() {
    const int first = bareIoctlWithThreadId();
    return first | bareIoctlWithThreadId();
}

int taskStartAndEnd() {
    return VELKMachine::notifyTaskStart(&gKey, kTask) | VELKMachine::notifyTaskEnd(&gKey, kTask);
}

int sceneChange() {
    return VELKMachine::notifyTaskSceneChange(kRunningTask, VELK_SCENE_CHANGE_MODE_DEFAULT);
}

int controlAndReset() {
    static const VELKSingleShotControl control = [] {
        VELKSingleShotControl levels;
        levels.uclampLevels.assign(8, 512);
        return levels;
    }();
    return VELKMachine::notifySingleShotControl(control) |
           VELKMachine::notifyResetSingleShotControl();
}

// --- Rows ----------------------------------------------------------------------------------------

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
    std::vector<Sample> samples = {};
};

struct Section {
    std::string title;
    std::string besideWhat;
    double unitsPerCall;
    std::vector<Row> rows;
};

std::vector<Section> allSections() {
    const bench::Alternative scheduler = bench::schedulerAttributes();
    const bench::Alternative group = bench::controlGroup();
    return {{"notification",
             "bare calls",
             1,
             {{"notifyVSync", VELKInfoNotifier::notifyVSync, bareIoctl, 1.15},
              {"notifyCamFps", [] { return VELKInfoNotifier::notifyCamFps(30); }, bareIoctl, 1.15},
              {"notifyTaskStart + notifyTaskEnd", taskStartAndEnd, twoBareIoctlsWithThreadId, 1.5},
              {"notifyTaskSceneChange", sceneChange, bareIoctlWithThreadId, 1.3},
              {"notifyAnchorPointStart",
               [] { return VELKMachine::notifyAnchorPointStart(bench::kAnchor, 1); }, bareIoctl,
               1.6},
              {"notifyAnchorPointEnd",
               [] { return VELKMachine::notifyAnchorPointEnd(bench::kAnchor, 1); }, bareIoctl, 1.3},
              {"notifySingleShotCriticalTaskStart",
               [] { return VELKMachine::notifySingleShotCriticalTaskStart(kTask); },
               bareIoctlWithThreadId, 1.3},
              {"notifySingleShotCriticalTaskEnd",
               [] { return VELKMachine::notifySingleShotCriticalTaskEnd(kTask); },
               bareIoctlWithThreadId, 1.3},
              {"notifySingleShotControl + reset", controlAndReset, twoBareIoctlsWithThreadId, {}}}},
            {"instead of task start and end",
             "start + end",
             1,
             {{scheduler.name, scheduler.action, taskStartAndEnd, {}, scheduler.remark},
              {group.name, group.action, taskStartAndEnd, {}, group.remark}}},
            {"disabled log site",
             "VELK_LOGD",
             bench::kDisabledSites,
             {{"loop alone", bench::loopAlone, bench::velkLogSites, {}},
              {"VELK_LOGD_GATED", bench::velkGatedLogSites, bench::velkLogSites, {}},
              {"spdlog, debug()", bench::spdlogSites, bench::velkLogSites, {}},
              {"glog, VLOG(1)", bench::glogSites, bench::velkLogSites, {}},
              {"AOSP libbase, LOG(DEBUG)", bench::libbaseSites, bench::velkLogSites, {}}}},
            {"disabled trace section",
             "TraceSection",
             bench::kDisabledSites,
             {{"AOSP libcutils, begin + end",
               bench::cutilsTraceSections,
               bench::velkTraceSections,
               {}}}}};
}

// --- Measuring -----------------------------------------------------------------------------------

// Short enough that both actions meet the same load of the machine, long enough for its clock.
constexpr int kCallsAtOnce = 500;

double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The thread's time for all the calls in seconds; empty when one fails.
std::optional<double> timeCalls(Action action) {
    int result = 0;
    const double begin = threadSeconds();
    for (int call = 0; call < kCallsAtOnce; ++call) {
        result |= action();
    }
    const double end = threadSeconds();
    return result == 0 ? std::optional(end - begin) : std::nullopt;
}

class RowBenchmark : public benchmark::internal::Benchmark {
  public:
    explicit RowBenchmark(const Row& row) : Benchmark(row.name.c_str()), mRow(row) {
        UseManualTime();
    }

    void Run(benchmark::State& state) override {
        double sum = 0;
        while (state.KeepRunning()) {
            const auto own = timeCalls(mRow.action);
            const auto beside = timeCalls(mRow.beside);
            if (!own || !beside) {
                state.SkipWithError("a call failed");
                break;
            }
            state.SetIterationTime(*own);
            sum += *beside;
        }
        state.counters["beside"] = benchmark::Counter(sum, benchmark::Counter::kAvgIterations);
    }

  private:
    const Row& mRow;
};

// Runs the rows and gives each its results, one a repetition.
class Collector : public benchmark::BenchmarkReporter {
  public:
    explicit Collector(std::vector<Section>& sections) {
        for (Section& section : sections) {
            for (Row& row : section.rows) {
                if (row.action != nullptr) {
                    mRows[row.name] = &row;
                    // The registry owns it.
                    benchmark::internal::RegisterBenchmarkInternal(new RowBenchmark(row));
                }
            }
        }
    }

    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            Row& row = *mRows.at(run.run_name.function_name);
            if (run.error_occurred) {
                fmt::print(stderr, "velk_bench: {}: {}\n", row.name, run.error_message);
                mHasFailed = true;
            } else if (run.run_type == Run::RT_Iteration) {
                const double own = run.real_accumulated_time / static_cast<double>(run.iterations);
                row.samples.push_back({own, run.counters.at("beside")});
            }
        }
    }

    bool hasFailed() const { return mHasFailed; }

  private:
    std::map<std::string, Row*> mRows;
    bool mHasFailed = false;
};

// --- Results -------------------------------------------------------------------------------------

template <typename Figure>
double medianOf(const Row& row, Figure figure) {
    std::vector<double> figures;
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

int run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc > 2) {
        fmt::print(stderr, "usage: velk_bench [BENCHMARK FLAGS] [FILE FOR JSON]\n");
        return 2;
    }
    VELKInitParams params{};
    params.scenario = VELK_SCENARIO_FALLBACK;
    if (VELKMachine::init(params) != 0 || VELKMachine::notifyTaskStart(&gKey, kRunningTask) != 0) {
        throw std::runtime_error("the library does not come up");
    }

    std::vector<Section> sections = allSections();
    Collector collector(sections);
    benchmark::RunSpecifiedBenchmarks(&collector);
    VELKMachine::uninit();
    printTable(sections);
    if (argc == 2) {
        writeJson(sections, argv[1]);
    }
    return collector.hasFailed() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velk_bench: %s\n", error.what());
        return 1;
    }
}
