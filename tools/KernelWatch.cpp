#include "KernelWatch.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <stdexcept>

#include "common/StandardStreams.h"
#include "node/KernelNode.h"
#include "play/KernelCounts.h"
#include "report/RecordJson.h"

namespace desk {

namespace {

constexpr const char* kProgram = "velk-replay";
constexpr const char* kStatePath = "/proc/velk/state";

std::string nameOfAnswer(int error) {
    const char* const name = strerrorname_np(error);
    return error == 0 ? "0" : name != nullptr ? name : fmt::format("errno {}", error);
}

std::string describe(const DifferentAnswers& answers) {
    const VELKCommand* const command = findVELKCommand(answers.request);
    const std::string name = command != nullptr ? std::string(command->name)
                                                : fmt::format("request {:#x}", answers.request);
    const std::string fields = command != nullptr && answers.record != nullptr
                                       ? " " + describeRecord(*command, answers.record)
                                       : std::string();
    return fmt::format("{}: the kernel answers {}, the model {}:{}", name,
                       nameOfAnswer(answers.kernel), nameOfAnswer(answers.model), fields);
}

}  // namespace

KernelWatch::KernelWatch() {
    const int error = useKernelNode([this](const DifferentAnswers& answers) {
        ++mDifferences;
        sayError(kProgram, describe(answers));
    });
    if (error != 0) {
        throw std::runtime_error(fmt::format("{}: {}", VELK_NODE_PATH, std::strerror(error)));
    }
}

void KernelWatch::compareCounts(const DriverSnapshot& model) {
    std::ifstream state(kStatePath);
    if (!state) {
        sayError(kProgram, fmt::format("{}: not there, so the counts of commands are not compared",
                                       kStatePath));
        return;
    }
    for (const std::string& difference : differentCounts(state, getpid(), model)) {
        ++mDifferences;
        sayError(kProgram, difference);
    }
}

}  // namespace desk
