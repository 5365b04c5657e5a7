/*
 * Checks a single-shot control and turns it into the record that the driver takes.
 */
#pragma once

#include <map>

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"
#include "foundation/Visibility.h"

class VELKRescManagement;

// Whether every value of the control is within the ranges that VELKSingleShotControl states.
VELK_INTERNAL bool isValidSingleShotControl(const VELKSingleShotControl& control);

// Task enum -> uclamp of its threads.
using CriticalTaskUclamps = std::multimap<int32_t, int32_t>;

// Fills a zeroed record from a control, except for its critical tasks.
VELK_INTERNAL void setSingleShotParam(VELK_SINGLE_SHOT_PARAM& record,
                                      const VELKSingleShotControl& control);

// Names the critical tasks in the record by the unique task ids that exist for their enums. With
// none, or more than the record holds, it names no task at all.
VELK_INTERNAL void setCriticalTasks(VELK_SINGLE_SHOT_PARAM& record,
                                    const CriticalTaskUclamps& criticalTasks,
                                    VELKRescManagement& resource);
