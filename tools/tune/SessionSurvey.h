/*
 * What sessions ask of the tuning data: in which use cases, for which tasks, categories and
 * anchors.
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

// The first call that asks for something.
struct CallPlace {
    std::string session;
    uint64_t line = 0;
};

struct AskedTuning {
    CallPlace init;
    std::map<int, CallPlace> tasks;
    std::map<int, CallPlace> categories;  // but those whose control a caller handed over before
    std::map<int, CallPlace> anchors;
};

class SessionSurvey {
  public:
    // Reads a session, and goes on behind lines that are no call.
    void read(const std::string& path);

    // By what the library was brought up with.
    const std::map<UseCase, AskedTuning>& useCases() const { return mUseCases; }
    // "FILE:LINE: FIELD: PROBLEM, expected EXPECTED" of every line that is no call.
    const std::vector<std::string>& faults() const { return mFaults; }

  private:
    void take(const std::string& session, const SessionCall& call);
    void begin(const CallArguments& arguments, const CallPlace& place);
    void takeArguments(const SessionCall& call, const CallPlace& place, AskedTuning& asked);

    std::map<UseCase, AskedTuning> mUseCases;
    std::vector<std::string> mFaults;
    // Of the session that is being read.
    uint64_t mUsers = 0;
    std::optional<UseCase> mCurrent;  // while the library is up
    std::set<int> mHandedOver;        // categories with a control from a caller
};

}  // namespace desk
