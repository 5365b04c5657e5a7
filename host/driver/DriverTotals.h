/*
 * What the model of the driver counts, and so does whoever follows a driver in another process.
 */
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "driver/DriverEvent.h"
#include "driver/DriverSnapshot.h"

namespace desk {

inline void count(CallCounters& counters, Verdict verdict) {
    counters.accepted += isRefusal(verdict) ? 0U : 1U;
    counters.noted += verdict == Verdict::Noted ? 1U : 0U;
    counters.refusedInjected += verdict == Verdict::InjectedRefusal ? 1U : 0U;
    counters.refused += verdict == Verdict::Refused ? 1U : 0U;
}

// Has no effect when it is empty.
inline void countFinding(std::vector<FindingCount>& findings, const std::string& finding) {
    if (finding.empty()) {
        return;
    }
    const auto known = std::ranges::find(findings, finding, &FindingCount::finding);
    if (known != findings.end()) {
        ++known->count;
    } else {
        findings.push_back({finding, 1});
    }
}

inline bool canChangeControl(uint32_t request) {
    return request == VELK_IOC_INIT || request == VELK_IOC_SINGLE_SHOT ||
           request == VELK_IOC_UNINIT;
}

}  // namespace desk
