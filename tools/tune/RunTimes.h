/*
 * How long tasks and anchors took in a session, for each use case that it brings the library up
 * with.
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
    std::map<int, Distribution> jitter;   // likewise
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

// Adds what an evaluation of that kind told.
void addRunTimes(const nlohmann::ordered_json& told, RunTimes& times);

}  // namespace desk
