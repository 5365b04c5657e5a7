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

std::string describeSelector(const char* name, std::optional<int32_t> value) {
    return value ? fmt::format("{} {}", name, *value) : fmt::format("every {}", name);
}

// Variants and anchor specs may each appear once for the same selectors.
class SelectorCheck {
  public:
    void add(const JsonValue& json, std::optional<int32_t> scenario,
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

// A task with the place of its group head, which may stand behind its members.
struct ReadTask {
    bool hasOwnNumber = false;
    int number = 0;
    TaskTuning tuning;
    std::optional<JsonValue> groupHead;
};

void readTask(const JsonValue& json, TaskRange range, TuningVariant& variant, ReadTask& task) {
    json.readObject([&](JsonObject& object) {
        const JsonValue number = object.at("task");
        task.hasOwnNumber = number.read(task.number, range.min, range.max);
        object.require("name", task.tuning.name, TextLength{1, kMaxNameLength});
        object.require("targetTimeUs", task.tuning.targetTimeUs, 0, kMaxTime);
        object.require("defaultUclamp", task.tuning.defaultUclamp, 0, VELK_MAX_UCLAMP);
        object.allow("specValue", task.tuning.specValue);
        object.allow("vip", task.tuning.isVip);
        task.groupHead = object.find("groupHead");
        if (task.hasOwnNumber && !variant.tasks.emplace(task.number, task.tuning).second) {
            task.hasOwnNumber = false;
            number.fail(fmt::format("a second entry for task {}", task.number),
                        "each task once in its variant");
        }
    });
}

void readGroupHead(const ReadTask& task, bool areNumbersKnown, TuningVariant& variant) {
    int head = 0;
    if (!task.groupHead->read(head, 0) || !task.hasOwnNumber) {
        return;
    }
    if (areNumbersKnown && head != 0 && !variant.tasks.contains(head)) {
        task.groupHead->failAsFound("0 or a task of the same variant");
    }
    variant.tasks[task.number].groupHead = head;
}

void readTasks(const JsonValue& json, TaskRange range, TuningVariant& variant) {
    std::vector<ReadTask> tasks;
    json.readElements([&](const JsonValue& element) {
        readTask(element, range, variant, tasks.emplace_back());
    });
    // A head whose number is at fault would make all of its members faulty.
    const bool areNumbersKnown = std::all_of(
            tasks.begin(), tasks.end(), [](const ReadTask& task) { return task.hasOwnNumber; });
    for (const ReadTask& task : tasks) {
        if (task.groupHead) {
            readGroupHead(task, areNumbersKnown, variant);
        }
    }
}

void readAnchor(const JsonValue& json, AnchorSpecs& specs) {
    json.readObject([&](JsonObject& object) {
        int anchor = 0;
        std::array<int, 2> targets = {};
        const JsonValue number = object.at("anchor");
        const bool isNumber = number.read(anchor);
        object.allow("latencyUs", targets[0], 0, kMaxTime);
        object.allow("jitterUs", targets[1], 0, kMaxTime);
        if (isNumber && !specs.anchors.emplace(anchor, targets).second) {
            number.fail(fmt::format("a second entry for anchor {}", anchor),
                        "each anchor once in its list");
        }
    });
}

void readAnchorSpecs(JsonObject& source, std::vector<AnchorSpecs>& all) {
    const std::optional<JsonValue> list = source.find("anchorSpecs");
    if (!list) {
        return;
    }
    SelectorCheck selectors;
    list->readElements([&](const JsonValue& element) {
        AnchorSpecs& specs = all.emplace_back();
        element.readObject([&](JsonObject& object) {
            const bool hasScenario = object.require("scenario", specs.scenario);
            if (object.allow("customization", specs.customization) && hasScenario) {
                selectors.add(element, specs.scenario, specs.customization);
            }
            object.at("anchors").readElements(
                    [&](const JsonValue& anchor) { readAnchor(anchor, specs); });
        });
    });
}

// The library asks for customer data without levels and without a customization, so those belong
// to the platform's variants alone.
void readVariants(JsonObject& source, bool isPlatform, std::vector<TuningVariant>& variants) {
    SelectorCheck selectors;
    source.at("variants").readElements([&](const JsonValue& element) {
        TuningVariant& variant = variants.emplace_back();
        element.readObject([&](JsonObject& object) {
            bool areSelectorsRead = true;
            if (isPlatform) {
                object.require("clusterLevels", variant.clusterLevels, 0, VELK_MAX_UCLAMP);
                object.require("clusterDefaultLevels", variant.clusterDefaultLevels, 0,
                               VELK_MAX_UCLAMP);
                areSelectorsRead = object.allow("customization", variant.customization);
            }
            if (object.allow("scenario", variant.scenario) && areSelectorsRead) {
                selectors.add(element, variant.scenario, variant.customization);
            }
            readTasks(object.at("tasks"), isPlatform ? kPlatformTasks : kCustomerTasks, variant);
        });
    });
}

void readSource(const JsonValue& json, bool isPlatform, TuningSource& source) {
    json.readObject([&](JsonObject& object) {
        readVariants(object, isPlatform, source.variants);
        readAnchorSpecs(object, source.anchorSpecs);
    });
}

void readScenarioControl(const JsonValue& json, TuningData& data) {
    int category = 0;
    VELKScenario scenario = {};
    VELKSingleShotControl control;
    json.readObject([&](JsonObject& object) {
        const bool hasCategory = object.require("category", category);
        const bool hasScenario = object.require("scenario", scenario);
        readControl(object.at("control"), ControlRule::Tuning, control);
        control.category = category;
        if (hasCategory && hasScenario &&
            !data.singleShotControls[category].emplace(scenario, std::move(control)).second) {
            json.fail(fmt::format("a second entry for category {} and scenario {}", category,
                                  int32_t{scenario}),
                      "one entry for each");
        }
    });
}

}  // namespace

void readPlatform(const JsonValue& json, TuningData& data) {
    readSource(json, true, data.platform);
}

void readCustomer(const JsonValue& json, TuningData& data) {
    readSource(json, false, data.customer.emplace());
}

void readSettings(const JsonValue& json, TuningData& data) {
    json.readObject([&](JsonObject& object) {
        object.allow("maxEfficientFreqsKhz", data.maxEfficientFreqsKhz);
        if (const auto controls = object.find("singleShotControls")) {
            controls->readElements(
                    [&](const JsonValue& control) { readScenarioControl(control, data); });
        }
    });
}

}  // namespace desk
