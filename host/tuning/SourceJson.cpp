#include "tuning/SourceJson.h"

#include <fmt/format.h>

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
    int number = 0;
    TaskTuning tuning;
    std::optional<JsonValue> groupHead;
};

void readTask(const JsonValue& json, TaskRange range, TuningVariant& variant, ReadTask& task) {
    json.readObject([&](JsonObject& object) {
        const JsonValue number = object.at("task");
        const bool isNumber = number.read(task.number, range.min, range.max);
        object.require("name", task.tuning.name, TextLength{1, kMaxNameLength});
        object.require("targetTimeUs", task.tuning.targetTimeUs, 0, kMaxTime);
        object.require("defaultUclamp", task.tuning.defaultUclamp, 0, VELK_MAX_UCLAMP);
        object.allow("specValue", task.tuning.specValue);
        object.allow("vip", task.tuning.isVip);
        task.groupHead = object.find("groupHead");
        if (isNumber && !variant.tasks.emplace(task.number, task.tuning).second) {
            number.fail(fmt::format("a second entry for task {}", task.number),
                        "each task once in its variant");
        }
    });
}

void readGroupHead(const ReadTask& task, TuningVariant& variant) {
    int head = 0;
    if (!task.groupHead->read(head, 0)) {
        return;
    }
    if (head != 0 && !variant.tasks.contains(head)) {
        task.groupHead->failAsFound("0 or a task of the same variant");
    }
    variant.tasks[task.number].groupHead = head;
}

void readTasks(const JsonValue& json, TaskRange range, TuningVariant& variant) {
    std::vector<ReadTask> tasks;
    const bool areRead = json.readElements([&](const JsonValue& element) {
        readTask(element, range, variant, tasks.emplace_back());
    });
    // A head that could not be read would make all of its members faulty.
    for (const ReadTask& task : tasks) {
        if (areRead && task.groupHead) {
            readGroupHead(task, variant);
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
        const bool isRead = element.readObject([&](JsonObject& object) {
            object.require("scenario", specs.scenario);
            object.allow("customization", specs.customization);
            object.at("anchors").readElements(
                    [&](const JsonValue& anchor) { readAnchor(anchor, specs); });
        });
        if (isRead) {
            selectors.add(element, specs.scenario, specs.customization);
        }
    });
}

// The library asks for customer data without levels and without a customization, so those belong
// to the platform's variants alone.
void readVariants(JsonObject& source, bool isPlatform, std::vector<TuningVariant>& variants) {
    SelectorCheck selectors;
    source.at("variants").readElements([&](const JsonValue& element) {
        TuningVariant& variant = variants.emplace_back();
        const bool isRead = element.readObject([&](JsonObject& object) {
            if (isPlatform) {
                object.require("clusterLevels", variant.clusterLevels, 0, VELK_MAX_UCLAMP);
                object.require("clusterDefaultLevels", variant.clusterDefaultLevels, 0,
                               VELK_MAX_UCLAMP);
                object.allow("customization", variant.customization);
            }
            object.allow("scenario", variant.scenario);
            readTasks(object.at("tasks"), isPlatform ? kPlatformTasks : kCustomerTasks, variant);
        });
        if (isRead) {
            selectors.add(element, variant.scenario, variant.customization);
        }
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
    const bool isRead = json.readObject([&](JsonObject& object) {
        object.require("category", category);
        object.require("scenario", scenario);
        readControl(object.at("control"), ControlRule::Tuning, control);
    });
    control.category = category;
    if (isRead && !data.singleShotControls[category].emplace(scenario, std::move(control)).second) {
        json.fail(fmt::format("a second entry for category {} and scenario {}", category,
                              int32_t{scenario}),
                  "one entry for each");
    }
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
