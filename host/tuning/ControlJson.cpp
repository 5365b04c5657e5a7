#include "tuning/ControlJson.h"

#include <algorithm>

#include "foundation/CommandRecords.h"

namespace desk {

namespace {

// What the values of a control may be.
struct Ranges {
    int64_t minPercent = -1;
    int64_t maxPercent = 100;
    int64_t maxLevel = VELK_MAX_UCLAMP;
    int64_t minUclamp = 0;
    int64_t maxUclamp = VELK_MAX_UCLAMP;
    size_t maxLevels = 8;
};

constexpr Ranges kTuningRanges;
constexpr Ranges kRecordedRanges = {
        .minPercent = std::numeric_limits<int32_t>::min(),
        .maxPercent = std::numeric_limits<int32_t>::max(),
        .maxLevel = std::numeric_limits<uint32_t>::max(),
        .minUclamp = std::numeric_limits<int32_t>::min(),
        .maxUclamp = std::numeric_limits<int32_t>::max(),
        .maxLevels = std::numeric_limits<size_t>::max(),
};

class ControlReader {
  public:
    ControlReader(const CheckedJson& json, const Ranges& ranges) : mJson(json), mRanges(ranges) {}

    void read(const char* key, int32_t& value) const {
        read(key, value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
    }

    void read(const char* key, int32_t& value, int64_t min, int64_t max) const {
        if (const auto found = mJson.find(key)) {
            value = found->integer<int32_t>(min, max);
        }
    }

    void read(const char* key, bool& value) const {
        if (const auto found = mJson.find(key)) {
            value = found->boolean();
        }
    }

    void read(const char* key, std::vector<uint32_t>& levels) const {
        if (const auto found = mJson.find(key)) {
            for (const CheckedJson& level : found->elements(0, mRanges.maxLevels)) {
                levels.push_back(level.integer<uint32_t>(0, mRanges.maxLevel));
            }
        }
    }

    template <typename Value, size_t kCount>
    void read(const char* key, std::array<Value, kCount>& values) const {
        if (const auto found = mJson.find(key)) {
            const auto elements = found->elements(kCount, kCount);
            std::transform(elements.begin(), elements.end(), values.begin(),
                           [](const CheckedJson& element) { return element.integer<Value>(); });
        }
    }

    void read(const char* key, std::multimap<int32_t, int32_t>& uclamps) const {
        if (const auto found = mJson.find(key)) {
            for (const CheckedJson& pair : found->elements()) {
                const auto taskAndUclamp = pair.elements(2, 2);
                uclamps.emplace(
                        taskAndUclamp[0].integer<int32_t>(),
                        taskAndUclamp[1].integer<int32_t>(mRanges.minUclamp, mRanges.maxUclamp));
            }
        }
    }

  private:
    const CheckedJson& mJson;
    const Ranges& mRanges;
};

void checkMembers(const CheckedJson& json, ControlRule rule) {
    if (rule == ControlRule::Tuning) {
        json.checkKeys(
                {}, {"uclampLevels", "percentLevel", "requestValue", "auxValue", "releaseRequest",
                     "auxFlag", "rangeLevels1", "rangeLevels2", "rangeLevels3",
                     "criticalTaskUclamps", "limits", "passFlag", "sharedFlag", "extraValues"});
    } else {
        json.checkKeys({}, {"category", "uclampLevels", "percentLevel", "isReset", "requestValue",
                            "auxValue", "releaseRequest", "auxFlag", "rangeLevels1", "rangeLevels2",
                            "rangeLevels3", "criticalTaskUclamps", "limits", "passFlag",
                            "sharedFlag", "extraValues"});
    }
}

}  // namespace

VELKSingleShotControl readControl(const CheckedJson& json, ControlRule rule) {
    checkMembers(json, rule);
    const Ranges& ranges = rule == ControlRule::Tuning ? kTuningRanges : kRecordedRanges;
    const ControlReader reader(json, ranges);

    VELKSingleShotControl control;
    reader.read("category", control.category);
    reader.read("uclampLevels", control.uclampLevels);
    reader.read("percentLevel", control.percentLevel, ranges.minPercent, ranges.maxPercent);
    reader.read("isReset", control.isReset);
    reader.read("requestValue", control.requestValue);
    reader.read("auxValue", control.auxValue);
    reader.read("releaseRequest", control.releaseRequest);
    reader.read("auxFlag", control.auxFlag);
    reader.read("rangeLevels1", control.rangeLevels1);
    reader.read("rangeLevels2", control.rangeLevels2);
    reader.read("rangeLevels3", control.rangeLevels3);
    reader.read("criticalTaskUclamps", control.criticalTaskUclamps);
    reader.read("limits", control.limits);
    reader.read("passFlag", control.passFlag);
    reader.read("sharedFlag", control.sharedFlag);
    reader.read("extraValues", control.extraValues);
    return control;
}

}  // namespace desk
