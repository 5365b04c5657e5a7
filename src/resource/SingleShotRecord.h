/*
 * Checks a single-shot control and turns it into the record that the driver takes.
 */
#pragma once

#include <cstdint>
#include <vector>

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"
#include "foundation/Visibility.h"

// Whether every value of the control is within the ranges that VELKSingleShotControl states.
VELK_INTERNAL bool isValidSingleShotControl(const VELKSingleShotControl& control);

// Fills a zeroed record from a control, except for its critical tasks.
VELK_INTERNAL void setSingleShotParam(VELK_SINGLE_SHOT_PARAM& record,
                                      const VELKSingleShotControl& control);

// Fills in the critical tasks: their unique task ids and the uclamp of each. Logs an error and
// fills in nothing when there is none or more than the record holds.
VELK_INTERNAL void setCriticalTasks(VELK_SINGLE_SHOT_PARAM& record,
                                    const std::vector<unsigned>& ids,
                                    const std::vector<uint32_t>& uclamps);
