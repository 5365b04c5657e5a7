#include "resource/SingleShotRecord.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "foundation/LogGate.h"

namespace {

constexpr size_t kMaxLevels = std::size(VELK_SINGLE_SHOT_PARAM{}.uclampLevels);
constexpr size_t kMaxCriticalTasks = std::size(VELK_SINGLE_SHOT_PARAM{}.criticalTaskIds);

bool areValidLevels(const std::vector<uint32_t>& levels) {
    return levels.size() <= kMaxLevels &&
           std::all_of(levels.begin(), levels.end(),
                       [](uint32_t level) { return level <= VELK_MAX_UCLAMP; });
}

void copyLevels(const std::vector<uint32_t>& levels, uint32_t (&out)[kMaxLevels]) {
    std::copy_n(levels.begin(), std::min(levels.size(), kMaxLevels), out);
}

}  // namespace

bool isValidSingleShotControl(const VELKSingleShotControl& control) {
    return control.percentLevel >= -1 && control.percentLevel <= 100 &&
           areValidLevels(control.uclampLevels) && areValidLevels(control.rangeLevels1) &&
           areValidLevels(control.rangeLevels2) && areValidLevels(control.rangeLevels3) &&
           std::all_of(control.criticalTaskUclamps.begin(), control.criticalTaskUclamps.end(),
                       [](const auto& task) {
                           return static_cast<uint32_t>(task.second) <= VELK_MAX_UCLAMP;
                       });
}

void setSingleShotParam(VELK_SINGLE_SHOT_PARAM& record, const VELKSingleShotControl& control) {
    record.tid = gettid();
    copyLevels(control.uclampLevels, record.uclampLevels);
    record.percentLevel = control.percentLevel;
    record.requestValue = control.releaseRequest ? VELK_REQUEST_RELEASED : control.requestValue;
    record.auxValue = control.auxValue;
    copyLevels(control.rangeLevels1, record.rangeLevels1);
    copyLevels(control.rangeLevels2, record.rangeLevels2);
    copyLevels(control.rangeLevels3, record.rangeLevels3);
    record.isReset = control.isReset;
    record.auxFlag = control.auxFlag;
    std::copy(control.limits.begin(), control.limits.end(), record.limits);
    record.passFlag = control.passFlag;
    record.sharedFlag = control.sharedFlag;
    std::copy(control.extraValues.begin(), control.extraValues.end(), record.extraValues);
}

void setCriticalTasks(VELK_SINGLE_SHOT_PARAM& record, const std::vector<unsigned>& ids,
                      const std::vector<uint32_t>& uclamps) {
    if (ids.empty() || ids.size() > kMaxCriticalTasks) {
        VELK_LOGE("setSingleShotParam", "invalid critical task ids or uclamps size");
        return;
    }
    std::copy(ids.begin(), ids.end(), record.criticalTaskIds);
    std::copy(uclamps.begin(), uclamps.end(), record.criticalTaskUclamps);
}
