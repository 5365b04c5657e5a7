/*
 * What sessions need of the tuning data: the use cases, and in each of them the tasks, categories
 * and anchors.
 */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "VELKTypes.h"
#include "session/SessionReader.h"

namespace desk {

struct UseCase {
    VELKScenario scenario = {};
    VELKFeatureCustomization customization = {};

    bool operator<(const UseCase& other) const {
        return std::tie(scenario, customization) < std::tie(other.scenario, other.customization);
    }
};

// "scenario 1 and customization 2"
std::string describeUseCase(const UseCase& useCase);

// The first call that needs something.
struct CallPlace {
    std::string session;
    uint64_t line = 0;
};

struct AskedTuning {
    CallPlace init;
    std::map<int, CallPlace> tasks;
    std::map<int, CallPlace> categories;  // without those whose control a caller had supplied
    std::map<int, CallPlace> anchors;
};

class SessionSurvey {
  public:
    // Reads a session. Lines that are not a call are reported and skipped.
    void read(const std::string& path);

    // By use case, as given to init.
    const std::map<UseCase, AskedTuning>& useCases() const { return mUseCases; }
    // "FILE:LINE: FIELD: PROBLEM, expected EXPECTED" for each of these lines.
    const std::vector<std::string>& faults() const { return mFaults; }

  private:
    void take(const std::string& session, const SessionCall& call);
    void begin(const CallArguments& arguments, const CallPlace& place);
    void takeArguments(const SessionCall& call, const CallPlace& place, AskedTuning& asked);

    std::map<UseCase, AskedTuning> mUseCases;
    std::vector<std::string> mFaults;
    // The state of the session that is being read.
    uint64_t mUsers = 0;
    std::optional<UseCase> mCurrent;  // while the library is up
    std::set<int> mHandedOver;        // categories with a control that a caller supplied
};

}  // namespace desk
