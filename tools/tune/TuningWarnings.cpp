#include "tune/TuningWarnings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <span>

#include "VELKJsonConvertor.h"
#include "tuning/TuningLoader.h"

namespace desk {

namespace {

constexpr size_t kClusters = 3;

class Warnings {
  public:
    Warnings(const TuningData& data, const std::string& folder) : mData(data), mFolder(folder) {}

    std::vector<std::string> take() { return std::move(mLines); }

    void lookAtData() {
        lookAtSource(kPlatformFile, mData.platform);
        if (mData.customer) {
            lookAtSource(kCustomerFile, *mData.customer);
        }
        requireRising(kSettingsFile, "/maxEfficientFreqsKhz", mData.maxEfficientFreqsKhz);
        for (const auto& [category, scenarios] : mData.singleShotControls) {
            for (const auto& [scenario, control] : scenarios) {
                lookAtControl(category, scenario, control);
            }
        }
    }

    void lookAtUseCase(const UseCase& useCase, const AskedTuning& asked) {
        if (mData.platform.findVariant(useCase.scenario, useCase.customization) == nullptr) {
            addCall(asked.init, "init", describeUseCase(useCase) + ": no variant fits",
                    "a variant of platform.json that serves it");
            return;
        }
        for (const auto& [task, place] : asked.tasks) {
            lookAtStart(useCase, task, place);
        }
        for (const auto& [category, place] : asked.categories) {
            lookAtCategory(useCase, category, place);
        }
        const auto targets = targetsOf(useCase);
        for (const auto& [anchor, place] : asked.anchors) {
            const auto found = targets.find(anchor);
            if (found == targets.end() || found->second == std::array<int, 2>{}) {
                addCall(place, "anchor", fmt::format("anchor {} has no target", anchor),
                        fmt::format("one in the anchor specs of {}", describeUseCase(useCase)));
            }
        }
    }

    // Warns of an anchor that has targets in a scenario of the sessions, but is never passed there.
    void lookAtTargets(const char* file, const TuningSource& source, const SessionSurvey& survey) {
        for (size_t i = 0; i < source.anchorSpecs.size(); ++i) {
            const AnchorSpecs& specs = source.anchorSpecs[i];
            for (const auto& [anchor, targets] :
                 std::map(specs.anchors.begin(), specs.anchors.end())) {
                if (isUsed(specs, survey) && !isPassed(specs, anchor, survey)) {
                    add(file, fmt::format("/anchorSpecs/{}", i),
                        fmt::format("targets of anchor {}, which no session passes", anchor),
                        "targets of anchors that the pipeline passes");
                }
            }
        }
    }

  private:
    void add(const char* file, const std::string& path, const std::string& problem,
             const std::string& expected) {
        mLines.push_back(
                TuningFault{std::filesystem::path(mFolder) / file, path, problem, expected}.text());
    }

    void addCall(const CallPlace& place, const char* field, const std::string& problem,
                 const std::string& expected) {
        mLines.push_back(fmt::format("{}:{}: {}: {}, expected {}", place.session, place.line, field,
                                     problem, expected));
    }

    // Levels of clusters go from the smallest cores to the largest; 0 is none.
    void requireRising(const char* file, const std::string& path,
                       std::span<const uint32_t> levels) {
        const auto ofClusters = levels.first(std::min(kClusters, levels.size()));
        uint32_t highest = 0;
        for (const uint32_t level : ofClusters) {
            if (level != 0 && level < highest) {
                add(file, path, fmt::format("found {}, which decrease", ofClusters),
                    "figures that do not decrease from cluster to cluster");
                return;
            }
            highest = std::max(highest, level);
        }
    }

    bool isScenarioServed(VELKScenario scenario) const {
        const auto& variants = mData.platform.variants;
        return std::any_of(variants.begin(), variants.end(), [scenario](const auto& variant) {
            return variant.scenario.value_or(scenario) == scenario;
        });
    }

    void requireServed(const char* file, const std::string& path, VELKScenario scenario) {
        if (!isScenarioServed(scenario)) {
            add(file, path,
                fmt::format("is never chosen: no variant of {} serves scenario {}", kPlatformFile,
                            int32_t{scenario}),
                "a scenario that the platform serves");
        }
    }

    void lookAtSource(const char* file, const TuningSource& source) {
        for (size_t i = 0; i < source.variants.size(); ++i) {
            const TuningVariant& variant = source.variants[i];
            const std::string path = fmt::format("/variants/{}", i);
            if (variant.scenario) {
                requireServed(file, path, *variant.scenario);
            }
            requireRising(file, path + "/clusterLevels", variant.clusterLevels);
            requireRising(file, path + "/clusterDefaultLevels", variant.clusterDefaultLevels);
            for (const auto& [task, tuning] :
                 std::map(variant.tasks.begin(), variant.tasks.end())) {
                lookAtTask(file, path, task, tuning);
            }
        }
        for (size_t i = 0; i < source.anchorSpecs.size(); ++i) {
            requireServed(file, fmt::format("/anchorSpecs/{}", i), source.anchorSpecs[i].scenario);
        }
    }

    void lookAtTask(const char* file, const std::string& path, int task, const TaskTuning& tuning) {
        constexpr int kSmallestSentTarget = 5;
        if (tuning.targetTimeUs == 0 || tuning.defaultUclamp == 0) {
            add(file, path,
                fmt::format("task {} has a {} of 0, and every start of it fails", task,
                            tuning.targetTimeUs == 0 ? "targetTimeUs" : "defaultUclamp"),
                "at least 1");
        } else if (tuning.targetTimeUs < kSmallestSentTarget) {
            add(file, path,
                fmt::format("task {} has a targetTimeUs of {}, which reaches the driver as {}",
                            task, tuning.targetTimeUs, kSmallestSentTarget),
                fmt::format("at least {}", kSmallestSentTarget));
        }
    }

    void lookAtControl(int category, VELKScenario scenario, const VELKSingleShotControl& control) {
        const std::string path = fmt::format("/singleShotControls: category {}, scenario {}",
                                             category, int32_t{scenario});
        if (scenario != VELK_SCENARIO_FALLBACK) {
            requireServed(kSettingsFile, path, scenario);
        }
        requireRising(kSettingsFile, path + ": uclampLevels", control.uclampLevels);
        int last = -1;
        for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
            if (task != last && !isTaskKnownAnywhere(task)) {
                add(kSettingsFile, path,
                    fmt::format("criticalTaskUclamps name task {}, which no variant knows", task),
                    "tasks of a variant");
            }
            last = task;
        }
    }

    static bool isTaskKnown(const TuningSource& source, int task) {
        return std::any_of(source.variants.begin(), source.variants.end(),
                           [task](const auto& variant) { return variant.tasks.contains(task); });
    }

    bool isTaskKnownAnywhere(int task) const {
        return isTaskKnown(mData.platform, task) ||
               (mData.customer && isTaskKnown(*mData.customer, task));
    }

    // The library looks up the customer's data without a customization.
    const TuningVariant* variantFor(const UseCase& useCase, int task) const {
        if (task < VELK_TASK_ENUM_GAP) {
            return mData.platform.findVariant(useCase.scenario, useCase.customization);
        }
        return mData.customer
                       ? mData.customer->findVariant(useCase.scenario, VELK_CUSTOMIZATION_NONE)
                       : nullptr;
    }

    void lookAtStart(const UseCase& useCase, int task, const CallPlace& place) {
        const TuningVariant* variant = variantFor(useCase, task);
        if (variant != nullptr && variant->tasks.contains(task)) {
            return;
        }
        addCall(place, "task",
                isTaskKnownAnywhere(task)
                        ? fmt::format("task {} is not known to the variant that serves {}", task,
                                      describeUseCase(useCase))
                        : fmt::format("task {} is known to no variant", task),
                "a task of the tuning data");
    }

    void lookAtCategory(const UseCase& useCase, int category, const CallPlace& place) {
        const auto controls = mData.singleShotControls.find(category);
        if (controls == mData.singleShotControls.end() ||
            (!controls->second.contains(useCase.scenario) &&
             !controls->second.contains(VELK_SCENARIO_FALLBACK))) {
            addCall(place, "category", fmt::format("category {} has no control", category),
                    fmt::format("one in {} for scenario {} or {}", kSettingsFile,
                                int32_t{useCase.scenario}, int32_t{VELK_SCENARIO_FALLBACK}));
        }
    }

    // Merged as in the library: entries of the customer override those of the platform.
    std::unordered_map<int, std::array<int, 2>> targetsOf(const UseCase& useCase) const {
        auto targets = mData.platform.anchorSpecsFor(useCase.customization)[useCase.scenario];
        if (mData.customer) {
            const auto customs =
                    mData.customer->anchorSpecsFor(useCase.customization)[useCase.scenario];
            for (const auto& [anchor, custom] : customs) {
                std::array<int, 2>& merged = targets[anchor];
                for (size_t i = 0; i < merged.size(); ++i) {
                    merged[i] = custom[i] != 0 ? custom[i] : merged[i];
                }
            }
        }
        return targets;
    }

    static bool serves(const AnchorSpecs& specs, const UseCase& useCase) {
        return specs.scenario == useCase.scenario &&
               specs.customization.value_or(useCase.customization) == useCase.customization;
    }

    static bool isUsed(const AnchorSpecs& specs, const SessionSurvey& survey) {
        const auto& useCases = survey.useCases();
        return std::any_of(useCases.begin(), useCases.end(),
                           [&specs](const auto& each) { return serves(specs, each.first); });
    }

    static bool isPassed(const AnchorSpecs& specs, int anchor, const SessionSurvey& survey) {
        const auto& useCases = survey.useCases();
        return std::any_of(useCases.begin(), useCases.end(), [&](const auto& each) {
            return serves(specs, each.first) && each.second.anchors.contains(anchor);
        });
    }

    const TuningData& mData;
    const std::string& mFolder;
    std::vector<std::string> mLines;
};

}  // namespace

std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder) {
    Warnings warnings(data, folder);
    warnings.lookAtData();
    return warnings.take();
}

std::vector<std::string> warningsAbout(const TuningData& data, const std::string& folder,
                                       const SessionSurvey& survey) {
    Warnings warnings(data, folder);
    for (const auto& [useCase, asked] : survey.useCases()) {
        warnings.lookAtUseCase(useCase, asked);
    }
    warnings.lookAtTargets(kPlatformFile, data.platform, survey);
    if (data.customer) {
        warnings.lookAtTargets(kCustomerFile, *data.customer, survey);
    }
    return warnings.take();
}

}  // namespace desk
