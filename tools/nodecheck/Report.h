/*
 * The findings about a driver, for people and for programs.
 */
#pragma once

#include <string>
#include <vector>

#include "nodecheck/Checks.h"

namespace nodecheck {

struct CheckResult {
    const Check* check = nullptr;
    Findings findings;
};

struct Report {
    Settings settings;
    bool hasStateFile = false;
    bool isStrict = false;  // lenient answers count as failures
    std::vector<CheckResult> results;

    bool isPassed() const;
};

// A line for the check, and one for each detail, with line ends.
std::string formatResult(const CheckResult& result);
std::string formatEnd(const Report& report);
// One JSON document without a line end. Empty where this program was built without JSON.
std::string formatJson(const Report& report);
extern const bool kHasJson;

}  // namespace nodecheck
