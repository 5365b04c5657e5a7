/*
 * The tuning services of the camera stack on the desk: they answer from the data that is installed.
 */
#pragma once

#include <memory>

#include "tuning/TuningData.h"

namespace desk {

// From now on new convertors and the settings provider answer from `data`; null takes everything
// away. A convertor keeps the data that it was made with. Any thread may call.
void installTuning(std::shared_ptr<const TuningData> data);

}  // namespace desk
