/*
 * The settings of the desk that velk-run sends to a live program.
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
    bool isFollowed = false;  // when false, this process sends nothing
    bool hasLog = false;
    bool hasUlog = false;
    bool hasTrace = false;
    InjectedFaults faults;
    TuningTexts tuning;  // already checked by the loader
    std::vector<std::pair<std::string, std::string>> properties;
};

void writeSetup(FrameWriter& frame, const Setup& setup);
// Throws std::runtime_error.
Setup readSetup(std::string_view content);

}  // namespace desk
