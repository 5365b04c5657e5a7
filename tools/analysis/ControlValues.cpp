#include "analysis/ControlValues.h"

#include <algorithm>

#include "foundation/CommandRecords.h"

namespace desk {

ControlValues valuesOf(const VELKSingleShotControl& control) {
    ControlValues values;
    if (control.percentLevel >= 1) {
        values.emplace_back(ControlField::PercentLevel, 0, control.percentLevel);
    }
    for (size_t i = 0; i < control.uclampLevels.size(); ++i) {
        values.emplace_back(ControlField::UclampLevel, static_cast<int32_t>(i),
                            control.uclampLevels[i]);
    }
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        values.emplace_back(ControlField::TaskUclamp, task, uclamp);
    }
    if (control.requestValue != VELK_NO_REQUEST) {
        values.emplace_back(ControlField::RequestValue, 0, 1);  // a reset releases any value
    }
    if (control.limits[0] != 0) {
        values.emplace_back(ControlField::Limit, 0, control.limits[0]);
    }
    if (control.sharedFlag) {
        values.emplace_back(ControlField::SharedFlag, 0, 1);
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

}  // namespace desk
