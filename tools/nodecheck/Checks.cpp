#include "nodecheck/Checks.h"

#include <fmt/format.h>
#include <unistd.h>

#include <exception>
#include <stdexcept>

namespace nodecheck {

namespace {

constexpr Check kChecks[] = {
        {"values", "a valid value of a field is taken", checkValidValues},
        {"orders", "valid records in any legal order are taken", checkOrders},
        {"ranges", "a value outside its range is refused with EINVAL", checkInvalidValues},
        {"zeros", "reserved bytes other than 0 and flags above 1 are refused with EINVAL",
         checkZeros},
        {"relations", "fields that contradict each other are refused with EINVAL", checkRelations},
        {"tasks", "an unknown task is refused with EINVAL", checkUnknownTasks},
        {"requests", "any other request is refused with ENOTTY", checkRequests},
        {"pointers", "memory that cannot be read is refused with EFAULT", checkPointers},
        {"threadIds", "the id of another thread is refused with EINVAL", checkThreadIds},
        {"files", "files of one process share their state, and it ends with the last", checkFiles},
        {"random", "random commands get their documented answers", checkRandomCommands},
        {"dyingThreads", "threads that die inside a task are forgotten", checkDyingThreads},
        {"dyingProcesses", "processes that are killed inside a task are forgotten",
         checkDyingProcesses},
};

// That the node still answers, and keeps nothing of what the check has left.
void checkAftermath(Trial& trial, NodeFile& file) {
    trial.mustTakeOne(VELK_IOC_INIT);
    trial.mustTakeOne(VELK_IOC_UNINIT);
    file.close();
    trial.expectAnswer(NodeFile().error(), 0, "open after the check");
    trial.expect(stateLines(getpid()).empty(),
                 "the state lists this process although it has closed its files");
}

}  // namespace

std::span<const Check> allChecks() {
    return kChecks;
}

Findings runCheck(const Check& check, const Settings& settings) {
    NodeFile file;
    Trial trial(file);
    if (file.error() != 0) {
        trial.expectAnswer(file.error(), 0, "open");
        return trial.findings();
    }
    try {
        check.run(trial, settings);
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("check {}: {}", check.name, error.what()));
    }
    checkAftermath(trial, file);
    return trial.findings();
}

}  // namespace nodecheck
