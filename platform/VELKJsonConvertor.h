/*
 * The camera stack's source of tuning figures for tasks and CPU clusters. The virtual operations
 * stand in the order of the closed class's virtual table, which must not change.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "VELKTypes.h"

enum ENUM_VELK_JSON_SOURCE : int32_t {
    VELK_JSON_SOURCE_PLATFORM = 0,
    VELK_JSON_SOURCE_CUSTOMER = 1,
};

// The platform's source describes the tasks with enums below this one, the customer's source those
// above, and no source this one itself.
inline constexpr int32_t VELK_TASK_ENUM_GAP = 21;

// What getTaskTargetTime answers for a task that the source does not know.
inline constexpr int32_t VELK_UNKNOWN_TASK_TARGET_TIME = -2;

class VELKJsonConvertor {
  public:
    // A new convertor, or an empty owner when the source has no data.
    static std::unique_ptr<VELKJsonConvertor> createInstance(
            const ENUM_VELK_JSON_SOURCE& source, const VELKScenario& scenario,
            const VELKFeatureCustomization& custom);

    virtual ~VELKJsonConvertor() = default;

    virtual void reserved3() = 0;  // not called by the library

    // In microseconds; VELK_UNKNOWN_TASK_TARGET_TIME when the task is unknown.
    virtual int32_t getTaskTargetTime(const int& task) = 0;
    virtual int32_t getTaskDefaultUclamp(const int& task) = 0;  // 0..1024
    virtual int32_t getTaskSpecValue(const int& task) = 0;
    virtual bool isVIPTask(const int& task) = 0;
    // Task enum of the head of the task's group, 0 for none.
    virtual int getGroupHeadTask(const int& task, const VELKTaskExtraParams& extra) = 0;

    virtual void reserved9() = 0;  // not called by the library

    // 0..1024. The index is a CPU cluster, 0..2, or a position among the levels, 0..7.
    virtual uint32_t getClusterLevel(int index) = 0;
    virtual uint32_t getClusterDefaultLevel(int cluster) = 0;
    // Empty when the task is unknown.
    virtual std::string getTaskName(const int& task) = 0;
    // Called once, before any other operation.
    virtual void load() = 0;
};
