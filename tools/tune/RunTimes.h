/*
 * How long tasks and anchors took in a session, for each use case with which it initialises the
 * library.
 */
#pragma once

#include <map>
#include <vector>

#include "analysis/SessionAnalysis.h"
#include "tune/SessionReplay.h"
#include "tune/SessionSurvey.h"

namespace desk {

struct UseCaseTimes {
    std::map<int, Distribution> runs;     // by task
    std::map<int, Distribution> latency;  // by anchor
    std::map<int, Distribution> jitter;   // by anchor
};

using RunTimes = std::map<UseCase, UseCaseTimes>;

class RunTimesEvaluation : public Evaluation {
  public:
    void onCall(const PlayedCall& played) override;
    nlohmann::ordered_json result() const override;

  private:
    std::map<UseCase, SessionAnalysis> mAnalyses;
    SessionAnalysis* mCurrent = nullptr;
};

// Adds the result of such an evaluation.
void addRunTimes(const nlohmann::ordered_json& told, RunTimes& times);

}  // namespace desk
