// The desk's model of the driver against the driver: random commands give equal answers and states.
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>

#include "KernelNode.h"
#include "RandomRecords.h"
#include "driver/DriverModel.h"

namespace kernel {
namespace {

constexpr int kCommands = 100000;
constexpr int kStretch = 500;  // commands of one thread before the next thread's
constexpr int kModelFile = 3;

// As the lines of the state file. Starts and ends of tasks are the driver's own figures.
std::vector<std::string> linesOf(const desk::DriverSnapshot& snapshot) {
    std::vector<std::string> lines;
    for (const desk::TaskSnapshot& task : snapshot.tasks) {
        const uint32_t id = task.registration.uniqueTaskId;
        const auto control = snapshot.control.taskUclamps.find(id);
        lines.push_back(
                fmt::format("  task {} registered={:d} uclamp={} control={}", id, task.isRegistered,
                            static_cast<uint32_t>(task.registration.defaultUclamp),
                            control != snapshot.control.taskUclamps.end() ? control->second : 0));
    }
    for (const desk::RunningThread& run : snapshot.running) {
        lines.push_back(fmt::format("  run {} task={}", run.tid, run.uniqueTaskId));
    }
    for (const desk::CriticalSpan& span : snapshot.spans) {
        lines.push_back(fmt::format("  span {} value={}", span.tid, span.criticalValue));
    }
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        if (const auto& counters = snapshot.commands[i]; counters.accepted + counters.refused > 0) {
            lines.push_back(fmt::format("  command {} accepted={} refused={}",
                                        VELK_COMMANDS[i].name, counters.accepted,
                                        counters.refused));
        }
    }
    const desk::MergedControl& control = snapshot.control;
    lines.push_back(fmt::format(
            "  control uclampLevels={} percentLevel={} limit={} sharedFlag={:d}{}",
            fmt::join(control.uclampLevels, ","), control.percentLevel, control.limit,
            control.sharedFlag,
            control.requestValue ? fmt::format(" requestValue={}", *control.requestValue) : ""));
    lines.push_back(fmt::format("initialised={:d} tasks={} other_requests={}",
                                snapshot.isInitialised, snapshot.tasks.size(),
                                snapshot.otherRequests.refused));
    std::ranges::sort(lines);
    return lines;
}

// The lines of the driver, reduced to what the model has.
std::vector<std::string> comparableLines() {
    std::vector<std::string> lines;
    for (std::string line : stateLines()) {
        if (line.starts_with("  thread ")) {
            continue;
        }
        if (line.starts_with("  task ")) {
            line.erase(line.find(" starts="));
        } else if (line.starts_with("process ")) {
            line = fmt::format(
                    "{} {} {}", line.substr(line.find("initialised="), 13),
                    line.substr(line.find("tasks="), line.find(" threads=") - line.find("tasks=")),
                    line.substr(line.find("other_requests=")));
        }
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    return lines;
}

TEST(Model, AnswersAsTheDriverDoes) {
    const NodeFile file;
    std::vector<std::unique_ptr<Actor>> actors(3);
    std::ranges::generate(actors, [&] { return std::make_unique<Actor>(file); });
    RandomRecords random(1);
    desk::DriverModel model;
    model.open(kModelFile, 0);

    for (int i = 0; i < kCommands; i += kStretch) {
        Actor& actor = *actors[random.number(actors.size())];
        actor.run([&] {
            for (int k = 0; k < kStretch && !testing::Test::HasFailure(); ++k) {
                const uint32_t request = random.request();
                const auto record = random.record(request, actor.tid());
                ASSERT_EQ(file.send(request, record.data()),
                          -model.command(kModelFile, request, record.data(), actor.tid()))
                        << "command " << i + k << ", request " << std::hex << request << ": "
                        << fmt::format("{:x}", fmt::join(record, " "));
            }
        });
        ASSERT_EQ(comparableLines(), linesOf(model.snapshot())) << "after " << i + kStretch;
    }
}

}  // namespace
}  // namespace kernel
