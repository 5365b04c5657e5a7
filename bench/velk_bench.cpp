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

#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "foundation/CommandTable.h"
#include "foundation/InheritingMutex.h"
#include "platform/StubPlatform.h"
#include "time/Alternatives.h"
#include "time/DisabledSites.h"
#include "time/Table.h"
#include "time/Timing.h"

namespace {

using bench::Row;
using bench::Section;

// --- Actions -------------------------------------------------------------------------------------

constexpr int kTask = bench::kFirstTask;
constexpr int kRunningTask = bench::kFirstTask + 1;  // on the measuring thread, all the time
// Each thread has keys of its own, as the threads of a camera pipeline have.
const char gKeys[bench::kMostThreads] = {};
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
    return VELKMachine::notifyTaskStart(&gKeys[bench::threadNumber()], kTask) |
           VELKMachine::notifyTaskEnd(&gKeys[bench::threadNumber()], kTask);
}

// What start and end do at least, under the one mutex or the other.
template <typename Mutex>
int lockedBareIoctl() {
    static Mutex mutex;
    const std::lock_guard<Mutex> lock(mutex);
    return bareIoctlWithThreadId();
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

std::string withThreads(const char* name, int threads) {
    return fmt::format("{}, {} thread{}", name, threads, threads == 1 ? "" : "s");
}

// As many threads make the call as make the bare calls.
Row contended(const char* name, int threads, bench::Action action, bench::Action beside) {
    return {withThreads(name, threads), action, beside, {}, {}, threads, threads};
}

Row contendedMutex(int threads, std::optional<double> wanted) {
    return {withThreads("lock and bare call", threads),
            lockedBareIoctl<InheritingMutex>,
            lockedBareIoctl<std::mutex>,
            wanted,
            {},
            threads,
            threads};
}

// Several threads at once, beside one thread that makes all their calls in turn.
Row inTurn(const char* name, int threads, bench::Action action, std::optional<double> wanted) {
    return {withThreads(name, threads), action, action, wanted, {}, threads, 1};
}

std::vector<Section> allSections() {
    const bench::Alternative scheduler = bench::schedulerAttributes();
    const bench::Alternative group = bench::controlGroup();
    return {{"notification",
             "bare calls",
             1,
             {{"notifyVSync", VELKInfoNotifier::notifyVSync, bareIoctl, 1.10},
              {"notifyCamFps", [] { return VELKInfoNotifier::notifyCamFps(30); }, bareIoctl, 1.10},
              {"notifyTaskStart + notifyTaskEnd", taskStartAndEnd, twoBareIoctlsWithThreadId, 1.25},
              {"notifyTaskSceneChange", sceneChange, bareIoctlWithThreadId, 1.12},
              {"notifyAnchorPointStart",
               [] { return VELKMachine::notifyAnchorPointStart(bench::kAnchor, 1); }, bareIoctl,
               1.15},
              {"notifyAnchorPointEnd",
               [] { return VELKMachine::notifyAnchorPointEnd(bench::kAnchor, 1); }, bareIoctl,
               1.15},
              {"notifySingleShotCriticalTaskStart",
               [] { return VELKMachine::notifySingleShotCriticalTaskStart(kTask); },
               bareIoctlWithThreadId, 1.12},
              {"notifySingleShotCriticalTaskEnd",
               [] { return VELKMachine::notifySingleShotCriticalTaskEnd(kTask); },
               bareIoctlWithThreadId, 1.12},
              {"notifySingleShotControl + reset", controlAndReset, twoBareIoctlsWithThreadId, {}}}},
            {"threads at once",
             "bare calls",
             1,
             {contended("notifyVSync", 1, VELKInfoNotifier::notifyVSync, bareIoctl),
              contended("notifyVSync", 2, VELKInfoNotifier::notifyVSync, bareIoctl),
              contended("notifyVSync", 4, VELKInfoNotifier::notifyVSync, bareIoctl),
              contended("start + end", 1, taskStartAndEnd, twoBareIoctlsWithThreadId),
              contended("start + end", 2, taskStartAndEnd, twoBareIoctlsWithThreadId),
              contended("start + end", 4, taskStartAndEnd, twoBareIoctlsWithThreadId)}},
            {"threads at once",
             "in turn",
             1,
             {inTurn("start + end at once", 2, taskStartAndEnd, {}),
              inTurn("start + end at once", 4, taskStartAndEnd, 1.3)}},
            {"the global mutex",
             "std::mutex",
             1,
             {contendedMutex(1, {}), contendedMutex(2, 1.11), contendedMutex(4, 1.11)}},
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

// Of a row with several threads. Each takes tens of milliseconds, of which the benchmark library is
// told a small part.
constexpr int kSharedIterations = 5;

class RowBenchmark : public benchmark::internal::Benchmark {
  public:
    // Older releases of the library take no string.
    // NOLINTNEXTLINE(readability-redundant-string-cstr)
    explicit RowBenchmark(const Row& row) : Benchmark(row.name.c_str()), mRow(row) {
        UseManualTime();
        if (row.threads) {
            Iterations(kSharedIterations);
        }
    }

    void Run(benchmark::State& state) override {
        double sum = 0;
        while (state.KeepRunning()) {
            const auto own = bench::timeCalls(mRow.action, mRow.threads);
            const auto beside = bench::timeCalls(mRow.beside, mRow.besideThreads);
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

// Why a run was given up; nothing when it was not. Its members have other names in newer releases
// of the library.
template <typename AnyRun>
std::optional<std::string> errorOf(const AnyRun& run) {
    if constexpr (requires { run.error_occurred; }) {
        return run.error_occurred ? std::optional(run.error_message) : std::nullopt;
    } else {
        return run.skipped != 0 ? std::optional(run.skip_message) : std::nullopt;
    }
}

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
            if (const std::optional<std::string> error = errorOf(run)) {
                fmt::print(stderr, "velk_bench: {}: {}\n", row.name, *error);
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

int run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc > 2) {
        fmt::print(stderr, "usage: velk_bench [BENCHMARK FLAGS] [FILE FOR JSON]\n");
        return 2;
    }
    const bench::IdleThread idle;
    VELKInitParams params{};
    params.scenario = VELK_SCENARIO_FALLBACK;
    if (VELKMachine::init(params) != 0 || VELKMachine::notifyTaskStart(gKeys, kRunningTask) != 0) {
        throw std::runtime_error("the library does not come up");
    }

    std::vector<Section> sections = allSections();
    Collector collector(sections);
    benchmark::RunSpecifiedBenchmarks(&collector);
    VELKMachine::uninit();
    bench::printTable(sections);
    if (argc == 2) {
        bench::writeJson(sections, argv[1]);
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
