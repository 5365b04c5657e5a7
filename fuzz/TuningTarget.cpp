/*
 * Reads bytes as tuning data: the texts of the three files, with lines of dashes between them. What
 * is taken keeps its ranges, and what is not has to say where and why.
 */
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "VELKJsonConvertor.h"
#include "tuning/TuningLoader.h"
#include "tuning/TuningPlatform.h"

namespace {

void require(bool holds, std::string_view what) {
    if (!holds) {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(what.size()), what.data());
        std::abort();
    }
}

template <typename Levels>
bool areLevels(const Levels& levels) {
    return std::all_of(levels.begin(), levels.end(), [](uint32_t level) { return level <= 1024; });
}

void checkSource(const desk::TuningSource& source, bool isPlatform) {
    for (const desk::TuningVariant& variant : source.variants) {
        require(areLevels(variant.clusterLevels) && areLevels(variant.clusterDefaultLevels),
                "levels of a variant");
        for (const auto& [task, tuning] : variant.tasks) {
            require(isPlatform ? task < VELK_TASK_ENUM_GAP : task > VELK_TASK_ENUM_GAP, "task");
            require(tuning.defaultUclamp >= 0 && tuning.defaultUclamp <= 1024, "uclamp of a task");
        }
    }
}

void checkControl(const VELKSingleShotControl& control) {
    for (const auto* levels : {&control.uclampLevels, &control.rangeLevels1, &control.rangeLevels2,
                               &control.rangeLevels3}) {
        require(levels->size() <= 8 && areLevels(*levels), "levels of a control");
    }
    require(control.percentLevel >= -1 && control.percentLevel <= 100, "percentLevel");
    for (const auto& [task, uclamp] : control.criticalTaskUclamps) {
        require(uclamp >= 0 && uclamp <= 1024, "uclamp of a critical task");
    }
}

// The text up to the next line of dashes, which is taken off with it.
std::optional<std::string> nextText(std::string_view& rest) {
    constexpr std::string_view kBorder = "\n---\n";
    if (rest.empty()) {
        return std::nullopt;
    }
    const size_t end = std::min(rest.find(kBorder), rest.size());
    std::string text(rest.substr(0, end));
    rest.remove_prefix(std::min(end + kBorder.size(), rest.size()));
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    desk::TuningTexts texts;
    texts.platform = nextText(rest).value_or("");
    texts.customer = nextText(rest);
    texts.settings = nextText(rest);
    const desk::TuningResult result = desk::parseTuning(texts);
    if (const auto* error = std::get_if<desk::TuningError>(&result)) {
        require(!error->faults.empty(), "an error without a fault");
        for (const desk::TuningFault& fault : error->faults) {
            require(fault.file.ends_with(".json") && !fault.problem.empty() &&
                            !fault.expected.empty() &&
                            (fault.path.empty() || fault.path.front() == '/'),
                    fault.text());
        }
        return 0;
    }
    const auto& tuning = std::get<0>(result);
    checkSource(tuning->platform, true);
    checkSource(tuning->customer.value_or(desk::TuningSource{}), false);
    for (const auto& [category, scenarios] : tuning->singleShotControls) {
        for (const auto& [scenario, control] : scenarios) {
            checkControl(control);
        }
    }
    return 0;
}
