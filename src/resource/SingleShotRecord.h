/*
 * Checks a single-shot control and turns it into the record that the driver takes.
 */
#pragma once

#include "VELKTypes.h"
#include "foundation/CommandRecords.h"

class VELKRescManagement;

// Whether every value of the control is within the ranges that VELKSingleShotControl states.
VELK_INTERNAL bool isValidSingleShotControl(const VELKSingleShotControl& control);

// Fills a zeroed record from a resolved control. Critical tasks need the resource manager, which
// knows their unique task ids; without one the record names none.
VELK_INTERNAL void setSingleShotParam(VELK_SINGLE_SHOT_PARAM& record,
                                      const VELKSingleShotControl& control,
                                      VELKRescManagement* resource);
