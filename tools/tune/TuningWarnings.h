/*
 * What is legal in tuning data, and wrong all the same.
 */
#pragma once

#include <string>
#include <vector>

#include "tune/SessionSurvey.h"
#include "tuning/TuningData.h"

namespace desk {

// A line "FILE: PATH: problem, expected ..." for each. `folder` is what the data was loaded from.
std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder);

// What the sessions ask for and do not get, and targets of anchors that none of them passes.
std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder,
                                       const SessionSurvey& survey);

}  // namespace desk
