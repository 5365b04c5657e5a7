/*
 * platform.json, customer.json and settings.json: from checked JSON to tuning data. All throw
 * JsonFault.
 */
#pragma once

#include "tuning/CheckedJson.h"
#include "tuning/TuningData.h"

namespace desk {

TuningSource readPlatform(const CheckedJson& json);
TuningSource readCustomer(const CheckedJson& json);
void readSettings(const CheckedJson& json, TuningData& data);

}  // namespace desk
