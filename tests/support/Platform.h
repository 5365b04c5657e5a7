/*
 * The platform as the library sees it: tuning data, properties, trace tags and the two log sinks,
 * all set by the test and all recorded.
 *
 * The default data gives every figure a value of its own, so that a figure taken from the wrong
 * place shows in the record.
 */
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

#include "ULogger.h"
#include "VELKJsonConvertor.h"
#include "VELKSettingsProvider.h"

namespace fake {

struct TaskFigures {
    int32_t targetTime = -2;  // the platform's answer for an unknown task
    int32_t defaultUclamp = 0;
    int32_t specValue = -1;
    bool isVip = false;
    std::string name;
    int groupHead = 0;
};

// What one JSON source holds.
struct Source {
    bool isMissing = false;
    std::map<int, TaskFigures> tasks;
    std::array<uint32_t, 8> clusterLevels = {};
    std::array<uint32_t, 3> clusterDefaultLevels = {};
};

enum Property { kDebugLog, kForceOff, kDumpTaskTable, kLatencySpec, kJitterSpec, kProperties };

struct Platform {
    void reset();

    void set(Property property, int value) { properties.at(property) = value; }

    std::array<Source, 2> sources;  // by ENUM_VELK_JSON_SOURCE
    VELKAnchorSpecMap anchors;
    VELKAnchorSpecMap custAnchors;
    std::array<uint32_t, 3> efficientFreqs = {};
    std::map<int, std::map<VELKScenario, VELKSingleShotControl>> singleShots;
    std::array<std::atomic<int64_t>, kProperties> properties = {};
    std::atomic<uint64_t> traceTags = 0;
    std::atomic<int> openSections = 0;  // over all threads
    std::atomic<int> livingConvertors = 0;
    bool formatterFails = false;  // vsnprintf gives -1 for log buffers
    std::string errorText;        // what strerror answers, unless empty
};

Platform& platform();

// The switches of ULogger, as the camera stack changes them while others read.
void setLogSwitches(uint32_t mode, uint32_t level = 5, uint32_t mask = 0x1001000);
void setLogger(bool isPresent);

}  // namespace fake
