/*
 * Turns recorded events into the lines of a transcript.
 */
#pragma once

#include <string>
#include <vector>

#include "support/Recorder.h"

namespace fake {

std::string formatTranscript(const std::vector<Event>& events, uint32_t shown);

}  // namespace fake
