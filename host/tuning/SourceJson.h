/*
 * platform.json, customer.json and settings.json: from JSON to tuning data. What is wrong is added
 * to the faults of the document.
 */
#pragma once

#include "tuning/JsonReader.h"
#include "tuning/TuningData.h"

namespace desk {

void readPlatform(const JsonValue& json, TuningData& data);
void readCustomer(const JsonValue& json, TuningData& data);
void readSettings(const JsonValue& json, TuningData& data);

}  // namespace desk
