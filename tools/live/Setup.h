/*
 * The desk of a live program, as velk-run wants it.
 */
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "driver/InjectedFaults.h"
#include "live/Frame.h"
#include "tuning/TuningLoader.h"

namespace desk {

struct Setup {
    bool isFollowed = false;  // else this process is to send nothing
    bool hasLog = false;
    bool hasUlog = false;
    bool hasTrace = false;
    InjectedFaults faults;
    TuningTexts tuning;  // that have been found in order
    std::vector<std::pair<std::string, std::string>> properties;
};

void writeSetup(FrameWriter& frame, const Setup& setup);
// Throws std::runtime_error.
Setup readSetup(std::string_view content);

}  // namespace desk
