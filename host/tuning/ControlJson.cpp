#include "tuning/ControlJson.h"

#include <algorithm>

#include "tuning/ControlTable.h"

namespace desk {

namespace {

// The values that the rule allows a member; beyond its type nothing is possible anyway.
struct Limits {
    int64_t min;
    int64_t max;
    size_t maxLevels;

    template <typename T>
    void read(const JsonValue& json, T& number) const {
        json.read(number, std::max(min, int64_t{std::numeric_limits<T>::min()}),
                  std::min(max, int64_t{std::numeric_limits<T>::max()}));
    }
};

constexpr int64_t kNoMin = std::numeric_limits<int64_t>::min();
constexpr int64_t kNoMax = std::numeric_limits<int64_t>::max();

void readField(const JsonValue& json, const Limits& limits, int32_t& number) {
    limits.read(json, number);
}

void readField(const JsonValue& json, const Limits& /*limits*/, bool& flag) {
    json.read(flag);
}

void readField(const JsonValue& json, const Limits& limits, std::vector<uint32_t>& levels) {
    json.readElements([&](const JsonValue& level) { limits.read(level, levels.emplace_back()); }, 0,
                      limits.maxLevels);
}

template <typename T, size_t kCount>
void readField(const JsonValue& json, const Limits& /*limits*/, std::array<T, kCount>& numbers) {
    json.read(numbers);
}

void readField(const JsonValue& json, const Limits& limits,
               std::multimap<int32_t, int32_t>& uclamps) {
    json.readElements([&](const JsonValue& pair) {
        std::array<int32_t, 2> taskAndUclamp = {};
        size_t place = 0;
        pair.readElements(
                [&](const JsonValue& number) {
                    if (place == 0) {
                        number.read(taskAndUclamp[0]);
                    } else {
                        limits.read(number, taskAndUclamp[1]);
                    }
                    ++place;
                },
                taskAndUclamp.size(), taskAndUclamp.size());
        uclamps.emplace(taskAndUclamp[0], taskAndUclamp[1]);
    });
}

}  // namespace

bool readControl(const JsonValue& json, ControlRule rule, VELKSingleShotControl& control) {
    return json.readObject([&](JsonObject& object) {
        for (const ControlMember& member : kControlMembers) {
            if (rule == ControlRule::Tuning && !member.isInTuning) {
                continue;
            }
            const Limits limits = rule == ControlRule::Tuning
                                          ? Limits{member.min, member.max, kMaxControlLevels}
                                          : Limits{kNoMin, kNoMax, JsonValue::kNoLimit};
            if (const auto found = object.find(member.name)) {
                std::visit([&](auto field) { readField(*found, limits, control.*field); },
                           member.field);
            }
        }
    });
}

}  // namespace desk
