// The commands in every order that a sender may choose.
#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <vector>

#include "nodecheck/Checks.h"

namespace nodecheck {

namespace {

constexpr size_t kLength = 4;  // after the init that begins each order

using Order = std::array<size_t, kLength>;  // places in the command table

bool next(Order& order) {
    for (size_t& place : order) {
        place = (place + 1) % VELK_COMMANDS.size();
        if (place != 0) {
            return true;
        }
    }
    return false;
}

bool needsTask(uint32_t request) {
    return request == VELK_IOC_TASK_START || request == VELK_IOC_TASK_END ||
           request == VELK_IOC_SCENE_CHANGE;
}

// A task has to be registered first; everything else may come at any time, an end before its start
// among it: notifications of several threads overtake each other.
bool isLegal(const Order& order) {
    bool isRegistered = false;
    for (const size_t place : order) {
        const uint32_t request = VELK_COMMANDS[place].request;
        if (needsTask(request) && !isRegistered) {
            return false;
        }
        isRegistered = request == VELK_IOC_TASK_INIT || (isRegistered && request != VELK_IOC_INIT);
    }
    return true;
}

std::string describe(const Order& order, size_t step) {
    std::string text = "init";
    for (size_t i = 0; i <= step; ++i) {
        text += fmt::format(", {}", VELK_COMMANDS[order[i]].name);
    }
    return text;
}

}  // namespace

void checkOrders(Trial& trial, const Settings&) {
    std::vector<Record> records;
    records.reserve(std::size(VELK_COMMANDS));
    for (const VELKCommand& command : VELK_COMMANDS) {
        records.push_back(validRecord(command, trial.tid()));
    }
    Order order = {};
    do {
        if (!isLegal(order)) {
            continue;
        }
        trial.mustTakeOne(VELK_IOC_INIT);
        for (size_t step = 0; step < kLength; ++step) {
            trial.mustTake(records[order[step]], [&] { return describe(order, step); });
        }
    } while (next(order));
}

void checkUnknownTasks(Trial& trial, const Settings&) {
    trial.mustTakeOne(VELK_IOC_INIT);
    for (const VELKCommand& command : VELK_COMMANDS) {
        if (needsTask(command.request)) {
            const Record record = validRecord(command, trial.tid());
            trial.mayTake(EINVAL, command.request, record.data(), [&] {
                return fmt::format("{} of a task that was never registered", command.name);
            });
        }
    }
}

}  // namespace nodecheck
