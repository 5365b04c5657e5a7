#include "tune/RunTimes.h"

#include <algorithm>
#include <string>

namespace desk {

using nlohmann::ordered_json;

namespace {

// Pairs of a time and its count. The longest time is exact, where the others are the middle of
// their bucket.
ordered_json timesToJson(const Distribution& times) {
    ordered_json pairs = ordered_json::array();
    const DistributionFigures figures = times.figures();
    uint64_t left = figures.count;
    times.forEachBucket([&](int64_t us, uint64_t count) {
        left -= count;
        const uint64_t others = left == 0 ? count - 1 : count;
        if (others > 0) {
            pairs.push_back({std::min(us, figures.longestUs), others});
        }
    });
    if (figures.count > 0) {
        pairs.push_back({figures.longestUs, 1});
    }
    return pairs;
}

void addTimes(const ordered_json& lists, std::map<int, Distribution>& all) {
    for (const auto& [number, pairs] : lists.items()) {
        Distribution& times = all[std::stoi(number)];
        for (const ordered_json& pair : pairs) {
            for (auto count = pair[1].get<uint64_t>(); count > 0; --count) {
                times.add(pair[0].get<int64_t>());
            }
        }
    }
}

}  // namespace

void RunTimesEvaluation::onCall(const PlayedCall& played) {
    for (const ReceivedCommand& command : played.commands) {
        if (command.request == VELK_IOC_INIT && command.command != nullptr) {
            const CallArguments& arguments = played.call->arguments;
            mCurrent = &mAnalyses[{
                    static_cast<VELKScenario>(arguments.scenario.value_or(0)),
                    static_cast<VELKFeatureCustomization>(arguments.customization.value_or(0))}];
        }
    }
    if (mCurrent != nullptr) {
        mCurrent->onCall(played);
    }
}

ordered_json RunTimesEvaluation::result() const {
    ordered_json list = ordered_json::array();
    for (const auto& [useCase, analysis] : mAnalyses) {
        ordered_json runs = ordered_json::object();
        ordered_json latency = ordered_json::object();
        ordered_json jitter = ordered_json::object();
        analysis.tasks().forEachTask([&](int task, const Distribution& times) {
            runs[std::to_string(task)] = timesToJson(times);
        });
        analysis.anchors().forEachAnchor(
                [&](int anchor, const Distribution& latencies, const Distribution& jitters) {
                    latency[std::to_string(anchor)] = timesToJson(latencies);
                    jitter[std::to_string(anchor)] = timesToJson(jitters);
                });
        list.push_back({{"scenario", int32_t{useCase.scenario}},
                        {"customization", int32_t{useCase.customization}},
                        {"runs", runs},
                        {"latency", latency},
                        {"jitter", jitter}});
    }
    return {{"useCases", list}};
}

void addRunTimes(const ordered_json& told, RunTimes& times) {
    for (const ordered_json& each : told["useCases"]) {
        UseCaseTimes& ofUseCase = times[{
                static_cast<VELKScenario>(each["scenario"].get<int32_t>()),
                static_cast<VELKFeatureCustomization>(each["customization"].get<int32_t>())}];
        addTimes(each["runs"], ofUseCase.runs);
        addTimes(each["latency"], ofUseCase.latency);
        addTimes(each["jitter"], ofUseCase.jitter);
    }
}

}  // namespace desk
