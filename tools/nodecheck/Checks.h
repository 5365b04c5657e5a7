/*
 * Everything that velk-node-check looks at.
 */
#pragma once

#include <cstdint>
#include <span>

#include "nodecheck/Trial.h"

namespace nodecheck {

struct Settings {
    uint32_t seed = 1;
    uint64_t randomCommands = 100000;
};

struct Check {
    const char* name;
    const char* rule;  // what holds when it passes
    void (*run)(Trial& trial, const Settings& settings);
};

std::span<const Check> allChecks();

// RecordChecks.cpp
void checkValidValues(Trial& trial, const Settings& settings);
void checkInvalidValues(Trial& trial, const Settings& settings);
void checkZeros(Trial& trial, const Settings& settings);
void checkRelations(Trial& trial, const Settings& settings);

// CallChecks.cpp
void checkRequests(Trial& trial, const Settings& settings);
void checkPointers(Trial& trial, const Settings& settings);
void checkThreadIds(Trial& trial, const Settings& settings);

// OrderChecks.cpp
void checkOrders(Trial& trial, const Settings& settings);
void checkUnknownTasks(Trial& trial, const Settings& settings);

// RandomCheck.cpp
void checkRandomCommands(Trial& trial, const Settings& settings);

// LifeChecks.cpp
void checkFiles(Trial& trial, const Settings& settings);
void checkDyingThreads(Trial& trial, const Settings& settings);
void checkDyingProcesses(Trial& trial, const Settings& settings);

// Opens the node, does the check, and looks whether the node is alive and its state clean then.
// Throws std::runtime_error when the machine lacks what the check needs.
Findings runCheck(const Check& check, const Settings& settings);

}  // namespace nodecheck
