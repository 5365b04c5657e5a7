/*
 * Small tuning data that tests vary.
 */
#pragma once

#include "tuning/TuningLoader.h"

namespace desk {

inline constexpr const char* kPlatformText = R"({
    "variants": [
        {
            "clusterLevels": [10, 20, 30, 40, 50, 60, 70, 80],
            "clusterDefaultLevels": [11, 21, 31],
            "tasks": [
                {"task": 3, "name": "TASK_SCALE", "targetTimeUs": 900, "defaultUclamp": 320,
                 "groupHead": 5},
                {"task": 5, "name": "TASK_RENDER", "targetTimeUs": 3, "defaultUclamp": 400,
                 "specValue": 7, "vip": true}
            ]
        },
        {"scenario": 1, "clusterLevels": [1, 0, 0, 0, 0, 0, 0, 0],
         "clusterDefaultLevels": [0, 0, 0], "tasks": []},
        {"customization": 2, "clusterLevels": [2, 0, 0, 0, 0, 0, 0, 0],
         "clusterDefaultLevels": [0, 0, 0], "tasks": []},
        {"scenario": 1, "customization": 2, "clusterLevels": [3, 0, 0, 0, 0, 0, 0, 0],
         "clusterDefaultLevels": [0, 0, 0], "tasks": []}
    ],
    "anchorSpecs": [
        {"scenario": 1, "anchors": [{"anchor": 1, "latencyUs": 100, "jitterUs": 10},
                                    {"anchor": 2, "jitterUs": 20}]},
        {"scenario": 1, "customization": 2, "anchors": [{"anchor": 1, "latencyUs": 200}]},
        {"scenario": 4, "anchors": []}
    ]
})";

inline constexpr const char* kCustomerText = R"({
    "variants": [
        {"scenario": 1, "tasks": [{"task": 24, "name": "TASK_CUSTOM_JPEG", "targetTimeUs": 50,
                                   "defaultUclamp": 640}]}
    ],
    "anchorSpecs": [{"scenario": 1, "anchors": [{"anchor": 7, "latencyUs": 5}]}]
})";

inline constexpr const char* kSettingsText = R"({
    "maxEfficientFreqsKhz": [1400000, 2000000, 2600000],
    "singleShotControls": [
        {"category": 5, "scenario": 8, "control": {
            "uclampLevels": [1, 2], "percentLevel": 80, "requestValue": 3, "auxValue": 4,
            "releaseRequest": true, "auxFlag": true, "rangeLevels1": [5], "rangeLevels2": [6],
            "rangeLevels3": [7], "criticalTaskUclamps": [[3, 300], [24, 900], [3, 100]],
            "limits": [8, 9, 10, 11], "passFlag": true, "sharedFlag": true,
            "extraValues": [12, -13, 14]}},
        {"category": 5, "scenario": 1, "control": {}}
    ]
})";

inline TuningTexts smallTuning() {
    return {kPlatformText, kCustomerText, kSettingsText};
}

}  // namespace desk
