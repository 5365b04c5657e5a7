/*
 * Warnings about tuning data that the loader accepts and that is wrong nevertheless.
 */
#pragma once

#include <string>
#include <vector>

#include "tune/SessionSurvey.h"
#include "tuning/TuningData.h"

namespace desk {

// A line "FILE: PATH: problem, expected ..." for each. `folder` is what the data was loaded from.
std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder);

// What the sessions need and the data lacks, and targets of anchors that no session passes.
std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder,
                                       const SessionSurvey& survey);

}  // namespace desk
