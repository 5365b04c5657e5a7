/*
 * The records that the driver receives: one struct a command, laid out as the driver reads it.
 * Every record is value-initialised before it is filled, so reserved words and padding are zero.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// Command 27: the library comes up.
struct VELK_INIT_PARAM {
    uint32_t driverParam;
    uint32_t clusterLevels[3];
    uint32_t maxEfficientFreqs[3];
    int32_t tuningParam1;
    int32_t tuningParam2;
};
static_assert(sizeof(VELK_INIT_PARAM) == 36);
static_assert(offsetof(VELK_INIT_PARAM, driverParam) == 0);
static_assert(offsetof(VELK_INIT_PARAM, clusterLevels) == 4);
static_assert(offsetof(VELK_INIT_PARAM, maxEfficientFreqs) == 16);
static_assert(offsetof(VELK_INIT_PARAM, tuningParam1) == 28);
static_assert(offsetof(VELK_INIT_PARAM, tuningParam2) == 32);

// Command 28: a new task is registered.
struct VELK_TASK_INIT_PARAM {
    uint32_t uniqueTaskId;
    uint32_t reserved4;
    int32_t defaultUclamp;
    int32_t targetTime;
    int32_t taskSpecValue;
    uint32_t reserved20;
    uint8_t isVIPTask;
    uint8_t extraFlag0;
    uint8_t extraFlag1;
    char taskName[10];  // short name, zero-terminated
    uint8_t reserved37[3];
};
static_assert(sizeof(VELK_TASK_INIT_PARAM) == 40);
static_assert(offsetof(VELK_TASK_INIT_PARAM, uniqueTaskId) == 0);
static_assert(offsetof(VELK_TASK_INIT_PARAM, reserved4) == 4);
static_assert(offsetof(VELK_TASK_INIT_PARAM, defaultUclamp) == 8);
static_assert(offsetof(VELK_TASK_INIT_PARAM, targetTime) == 12);
static_assert(offsetof(VELK_TASK_INIT_PARAM, taskSpecValue) == 16);
static_assert(offsetof(VELK_TASK_INIT_PARAM, reserved20) == 20);
static_assert(offsetof(VELK_TASK_INIT_PARAM, isVIPTask) == 24);
static_assert(offsetof(VELK_TASK_INIT_PARAM, extraFlag0) == 25);
static_assert(offsetof(VELK_TASK_INIT_PARAM, extraFlag1) == 26);
static_assert(offsetof(VELK_TASK_INIT_PARAM, taskName) == 27);
static_assert(offsetof(VELK_TASK_INIT_PARAM, reserved37) == 37);

// Commands 29, 30 and 31: a thread starts a task, ends it, or meets a scene change within it.
// Commands 29 and 30 leave sceneChangeMode zero.
struct VELK_TASK_PARAM {
    uint32_t tid;
    uint32_t uniqueTaskId;
    uint32_t reserved8;
    uint32_t sceneChangeMode;
};
static_assert(sizeof(VELK_TASK_PARAM) == 16);
static_assert(offsetof(VELK_TASK_PARAM, tid) == 0);
static_assert(offsetof(VELK_TASK_PARAM, uniqueTaskId) == 4);
static_assert(offsetof(VELK_TASK_PARAM, reserved8) == 8);
static_assert(offsetof(VELK_TASK_PARAM, sceneChangeMode) == 12);

// Command 32: the library goes down.
struct VELK_UNINIT_PARAM {
    uint32_t reserved0;
};
static_assert(sizeof(VELK_UNINIT_PARAM) == 4);
static_assert(offsetof(VELK_UNINIT_PARAM, reserved0) == 0);

// Command 33: a vertical sync happened; the event is the message.
struct VELK_VSYNC_PARAM {
    uint32_t reserved0;
    uint32_t reserved4;
};
static_assert(sizeof(VELK_VSYNC_PARAM) == 8);
static_assert(offsetof(VELK_VSYNC_PARAM, reserved0) == 0);
static_assert(offsetof(VELK_VSYNC_PARAM, reserved4) == 4);

// Command 34: the camera frame rate.
struct VELK_CAM_FPS_PARAM {
    uint32_t reserved0;
    uint32_t fps;
};
static_assert(sizeof(VELK_CAM_FPS_PARAM) == 8);
static_assert(offsetof(VELK_CAM_FPS_PARAM, reserved0) == 0);
static_assert(offsetof(VELK_CAM_FPS_PARAM, fps) == 4);

// Command 35: the merged single-shot control.
struct VELK_SINGLE_SHOT_PARAM {
    int32_t tid;
    uint32_t uclampLevels[8];
    int32_t percentLevel;  // -1 no request, -2 nothing active, else 1..100; unchecked while down
    int32_t requestValue;  // -2 releases an earlier request
    int32_t auxValue;
    uint32_t rangeLevels1[8];
    uint32_t rangeLevels2[8];
    uint32_t rangeLevels3[8];
    uint8_t isReset;
    uint8_t auxFlag;
    uint8_t reserved146[2];
    uint32_t criticalTaskIds[20];
    uint32_t criticalTaskUclamps[20];
    uint32_t limits[4];
    uint8_t passFlag;
    uint8_t sharedFlag;
    uint8_t reserved326[2];
    int32_t extraValues[3];
};
static_assert(sizeof(VELK_SINGLE_SHOT_PARAM) == 340);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, tid) == 0);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, uclampLevels) == 4);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, percentLevel) == 36);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, requestValue) == 40);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, auxValue) == 44);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels1) == 48);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels2) == 80);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, rangeLevels3) == 112);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, isReset) == 144);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, auxFlag) == 145);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, reserved146) == 146);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, criticalTaskIds) == 148);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, criticalTaskUclamps) == 228);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, limits) == 308);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, passFlag) == 324);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, sharedFlag) == 325);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, reserved326) == 326);
static_assert(offsetof(VELK_SINGLE_SHOT_PARAM, extraValues) == 328);

// Commands 36 and 37: a thread starts or ends a critical piece of a task.
struct VELK_CRITICAL_TASK_PARAM {
    int32_t tid;
    int32_t criticalValue;  // 0 at the end
};
static_assert(sizeof(VELK_CRITICAL_TASK_PARAM) == 8);
static_assert(offsetof(VELK_CRITICAL_TASK_PARAM, tid) == 0);
static_assert(offsetof(VELK_CRITICAL_TASK_PARAM, criticalValue) == 4);

// Command 38: an anchor point of the pipeline is passed.
struct VELK_ANCHOR_PARAM {
    int32_t anchor;
    int32_t reserved4;
    int32_t phase;  // VELK_ANCHOR_START or VELK_ANCHOR_END
    int32_t reserved12;
    uint32_t serial;
    int32_t latencyTarget;  // 0 at the end
    int32_t jitterTarget;
};
static_assert(sizeof(VELK_ANCHOR_PARAM) == 28);
static_assert(offsetof(VELK_ANCHOR_PARAM, anchor) == 0);
static_assert(offsetof(VELK_ANCHOR_PARAM, reserved4) == 4);
static_assert(offsetof(VELK_ANCHOR_PARAM, phase) == 8);
static_assert(offsetof(VELK_ANCHOR_PARAM, reserved12) == 12);
static_assert(offsetof(VELK_ANCHOR_PARAM, serial) == 16);
static_assert(offsetof(VELK_ANCHOR_PARAM, latencyTarget) == 20);
static_assert(offsetof(VELK_ANCHOR_PARAM, jitterTarget) == 24);

inline constexpr int32_t VELK_ANCHOR_START = 1;
inline constexpr int32_t VELK_ANCHOR_END = 2;

// Values that the driver reads as "release" and as "nothing is active".
inline constexpr int32_t VELK_REQUEST_RELEASED = -2;
inline constexpr int32_t VELK_PERCENT_NONE_ACTIVE = -2;
inline constexpr uint32_t VELK_LIMIT_NONE_ACTIVE = 999999;

// Whether the driver gets every bit of the record as the sender has set it.
template <typename Record>
inline constexpr bool isWireRecord = std::has_unique_object_representations_v<Record>;
