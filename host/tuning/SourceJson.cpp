#include "tuning/SourceJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

#include "VELKJsonConvertor.h"
#include "foundation/CommandRecords.h"
#include "tuning/ControlJson.h"

namespace desk {

namespace {

constexpr size_t kMaxNameLength = 64;
constexpr int32_t kMaxTime = std::numeric_limits<int32_t>::max();

struct TaskRange {
    int min;
    int max;
};
constexpr TaskRange kPlatformTasks = {0, VELK_TASK_ENUM_GAP - 1};
constexpr TaskRange kCustomerTasks = {VELK_TASK_ENUM_GAP + 1, std::numeric_limits<int>::max()};

template <typename Enum>
std::optional<Enum> readSelector(const CheckedJson& json, const char* key) {
    const auto found = json.find(key);
    return found ? std::optional(static_cast<Enum>(found->integer<int32_t>())) : std::nullopt;
}

std::string describeSelector(const char* name, std::optional<int32_t> value) {
    return value ? fmt::format("{} {}", name, *value) : fmt::format("every {}", name);
}

// Variants and anchor specs may each appear once for the same selectors.
class SelectorCheck {
  public:
    void add(const CheckedJson& json, std::optional<int32_t> scenario,
             std::optional<int32_t> customization) {
        if (!mSeen.emplace(scenario, customization).second) {
            json.fail(fmt::format("a second entry for {} and {}",
                                  describeSelector("scenario", scenario),
                                  describeSelector("customization", customization)),
                      "one entry for each");
        }
    }

  private:
    std::set<std::pair<std::optional<int32_t>, std::optional<int32_t>>> mSeen;
};

template <size_t kCount>
std::array<uint32_t, kCount> readFigures(const CheckedJson& json, int64_t max) {
    std::array<uint32_t, kCount> figures = {};
    const auto elements = json.elements(kCount, kCount);
    std::transform(elements.begin(), elements.end(), figures.begin(),
                   [max](const CheckedJson& figure) { return figure.integer<uint32_t>(0, max); });
    return figures;
}

TaskTuning readTask(const CheckedJson& json) {
    TaskTuning task;
    task.name = json.at("name").text(kMaxNameLength);
    task.targetTimeUs = json.at("targetTimeUs").integer<int32_t>(0, kMaxTime);
    task.defaultUclamp = json.at("defaultUclamp").integer<int32_t>(0, VELK_MAX_UCLAMP);
    if (const auto specValue = json.find("specValue")) {
        task.specValue = specValue->integer<int32_t>();
    }
    if (const auto vip = json.find("vip")) {
        task.isVip = vip->boolean();
    }
    return task;
}

// Heads are looked up when all tasks are known, because a head may stand behind its members.
void readGroupHeads(const std::vector<CheckedJson>& tasks, TuningVariant& variant) {
    for (const CheckedJson& json : tasks) {
        if (const auto head = json.find("groupHead")) {
            const int headTask = head->integer<int>(0, std::numeric_limits<int>::max());
            if (headTask != 0 && !variant.tasks.contains(headTask)) {
                head->failAsFound("0 or a task of the same variant");
            }
            variant.tasks.at(json.at("task").integer<int>()).groupHead = headTask;
        }
    }
}

void readTasks(const CheckedJson& json, TaskRange range, TuningVariant& variant) {
    const auto tasks = json.elements();
    for (const CheckedJson& task : tasks) {
        task.checkKeys({"task", "name", "targetTimeUs", "defaultUclamp"},
                       {"specValue", "vip", "groupHead"});
        const CheckedJson number = task.at("task");
        const int value = number.integer<int>(range.min, range.max);
        if (!variant.tasks.emplace(value, readTask(task)).second) {
            number.fail(fmt::format("a second entry for task {}", value),
                        "each task once in its variant");
        }
    }
    readGroupHeads(tasks, variant);
}

TuningVariant readSelectors(const CheckedJson& json, SelectorCheck& selectors) {
    TuningVariant variant;
    variant.scenario = readSelector<VELKScenario>(json, "scenario");
    variant.customization = readSelector<VELKFeatureCustomization>(json, "customization");
    selectors.add(json, variant.scenario, variant.customization);
    return variant;
}

AnchorSpecs readAnchorSpecs(const CheckedJson& json) {
    json.checkKeys({"scenario", "anchors"}, {"customization"});
    AnchorSpecs specs;
    specs.scenario = static_cast<VELKScenario>(json.at("scenario").integer<int32_t>());
    specs.customization = readSelector<VELKFeatureCustomization>(json, "customization");
    for (const CheckedJson& anchor : json.at("anchors").elements()) {
        anchor.checkKeys({"anchor"}, {"latencyUs", "jitterUs"});
        std::array<int, 2> targets = {};
        if (const auto latency = anchor.find("latencyUs")) {
            targets[0] = latency->integer<int>(0, kMaxTime);
        }
        if (const auto jitter = anchor.find("jitterUs")) {
            targets[1] = jitter->integer<int>(0, kMaxTime);
        }
        const CheckedJson number = anchor.at("anchor");
        const int value = number.integer<int>();
        if (!specs.anchors.emplace(value, targets).second) {
            number.fail(fmt::format("a second entry for anchor {}", value),
                        "each anchor once in its list");
        }
    }
    return specs;
}

std::vector<AnchorSpecs> readAllAnchorSpecs(const CheckedJson& json) {
    std::vector<AnchorSpecs> all;
    if (const auto list = json.find("anchorSpecs")) {
        SelectorCheck selectors;
        for (const CheckedJson& element : list->elements()) {
            all.push_back(readAnchorSpecs(element));
            selectors.add(element, all.back().scenario, all.back().customization);
        }
    }
    return all;
}

void readControls(const CheckedJson& json, TuningData& data) {
    for (const CheckedJson& element : json.elements()) {
        element.checkKeys({"category", "scenario", "control"});
        const auto category = element.at("category").integer<int32_t>();
        const auto scenario = element.at("scenario").integer<int32_t>();
        VELKSingleShotControl control = readControl(element.at("control"), ControlRule::Tuning);
        control.category = category;
        auto& scenarios = data.singleShotControls[category];
        if (!scenarios.emplace(static_cast<VELKScenario>(scenario), std::move(control)).second) {
            element.fail(fmt::format("a second entry for category {} and scenario {}", category,
                                     scenario),
                         "one entry for each");
        }
    }
}

}  // namespace

TuningSource readPlatform(const CheckedJson& json) {
    json.checkKeys({"variants"}, {"anchorSpecs"});
    TuningSource source;
    SelectorCheck selectors;
    for (const CheckedJson& element : json.at("variants").elements()) {
        element.checkKeys({"clusterLevels", "clusterDefaultLevels", "tasks"},
                          {"scenario", "customization"});
        TuningVariant variant = readSelectors(element, selectors);
        variant.clusterLevels = readFigures<8>(element.at("clusterLevels"), VELK_MAX_UCLAMP);
        variant.clusterDefaultLevels =
                readFigures<3>(element.at("clusterDefaultLevels"), VELK_MAX_UCLAMP);
        readTasks(element.at("tasks"), kPlatformTasks, variant);
        source.variants.push_back(std::move(variant));
    }
    source.anchorSpecs = readAllAnchorSpecs(json);
    return source;
}

TuningSource readCustomer(const CheckedJson& json) {
    json.checkKeys({"variants"}, {"anchorSpecs"});
    TuningSource source;
    SelectorCheck selectors;
    for (const CheckedJson& element : json.at("variants").elements()) {
        // The library asks for customer data without a customization, so none could ever be named.
        element.checkKeys({"tasks"}, {"scenario"});
        TuningVariant variant = readSelectors(element, selectors);
        readTasks(element.at("tasks"), kCustomerTasks, variant);
        source.variants.push_back(std::move(variant));
    }
    source.anchorSpecs = readAllAnchorSpecs(json);
    return source;
}

void readSettings(const CheckedJson& json, TuningData& data) {
    json.checkKeys({}, {"maxEfficientFreqsKhz", "singleShotControls"});
    if (const auto freqs = json.find("maxEfficientFreqsKhz")) {
        data.maxEfficientFreqsKhz = readFigures<3>(*freqs, std::numeric_limits<uint32_t>::max());
    }
    if (const auto controls = json.find("singleShotControls")) {
        readControls(*controls, data);
    }
}

}  // namespace desk
