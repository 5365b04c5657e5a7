/*
 * The control node, its requests and their records, as the driver reads them, and what each field
 * may hold. Plain C, so that a kernel module can include it. The sender, the decoder, the check of
 * records and the reference driver follow from the rows below; CommandTable.h is their form in C++.
 *
 * Every record is zeroed before it is filled, so reserved fields are zero. All padding is spelled
 * out: a record has no byte without a name.
 */
#pragma once

#ifdef __KERNEL__
#include <linux/ioctl.h>
#else
#include <sys/ioctl.h>
#endif

#include "CommandField.h"

#define VELK_NODE_PATH "/proc/velk/velk_ioctl"

// Full capacity on the scheduler's utilisation-clamp scale: the largest uclamp and level.
#define VELK_MAX_UCLAMP 1024
#define VELK_LEVEL VELK_BETWEEN(0, VELK_MAX_UCLAMP)
// The smallest target time of a task that the driver is told, in microseconds.
#define VELK_MIN_TARGET_TIME 5

// Phases of an anchor.
#define VELK_ANCHOR_START 1
#define VELK_ANCHOR_END 2

// What the fields of a merged control hold for "no request", "release the request" and "no control
// is active".
#define VELK_NO_REQUEST (-1)
#define VELK_REQUEST_RELEASED (-2)
#define VELK_PERCENT_NONE_ACTIVE (-2)
#define VELK_LIMIT_NONE_ACTIVE 999999

// Command 27: the library comes up.
struct VELK_INIT_PARAM {
    uint32_t driverParam;
    uint32_t clusterLevels[3];
    uint32_t maxEfficientFreqs[3];
    int32_t tuningParam1;
    int32_t tuningParam2;
};

VELK_CONSTANT struct VELKField VELK_INIT_FIELDS[] = {
        VELK_FIELD(VELK_INIT_PARAM, uint32_t, driverParam, VELK_ANY),
        VELK_FIELD(VELK_INIT_PARAM, uint32_t, clusterLevels, VELK_LEVEL),
        VELK_FIELD(VELK_INIT_PARAM, uint32_t, maxEfficientFreqs, VELK_ANY),
        VELK_FIELD(VELK_INIT_PARAM, int32_t, tuningParam1, VELK_AT_LEAST(1)),
        VELK_FIELD(VELK_INIT_PARAM, int32_t, tuningParam2, VELK_AT_LEAST(1)),
};

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

VELK_CONSTANT struct VELKField VELK_TASK_INIT_FIELDS[] = {
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint32_t, uniqueTaskId, VELK_ID),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint32_t, reserved4, VELK_RESERVED),
        VELK_FIELD(VELK_TASK_INIT_PARAM, int32_t, defaultUclamp, VELK_BETWEEN(1, VELK_MAX_UCLAMP)),
        VELK_FIELD(VELK_TASK_INIT_PARAM, int32_t, targetTime, VELK_AT_LEAST(VELK_MIN_TARGET_TIME)),
        VELK_FIELD(VELK_TASK_INIT_PARAM, int32_t, taskSpecValue, VELK_ANY),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint32_t, reserved20, VELK_RESERVED),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint8_t, isVIPTask, VELK_FLAG),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint8_t, extraFlag0, VELK_ANY),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint8_t, extraFlag1, VELK_ANY),
        VELK_FIELD(VELK_TASK_INIT_PARAM, char, taskName, VELK_ANY),
        VELK_FIELD(VELK_TASK_INIT_PARAM, uint8_t, reserved37, VELK_RESERVED),
};

// Commands 29, 30 and 31: a thread starts a task, ends it, or meets a scene change within it.
// Commands 29 and 30 leave sceneChangeMode zero.
struct VELK_TASK_PARAM {
    uint32_t tid;
    uint32_t uniqueTaskId;
    uint32_t reserved8;
    uint32_t sceneChangeMode;
};

VELK_CONSTANT struct VELKField VELK_TASK_FIELDS[] = {
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, tid, VELK_ID),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, uniqueTaskId, VELK_ID),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, reserved8, VELK_RESERVED),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, sceneChangeMode, VELK_RESERVED),
};

VELK_CONSTANT struct VELKField VELK_SCENE_CHANGE_FIELDS[] = {
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, tid, VELK_ID),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, uniqueTaskId, VELK_ID),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, reserved8, VELK_RESERVED),
        VELK_FIELD(VELK_TASK_PARAM, uint32_t, sceneChangeMode, VELK_ANY),
};

// Command 32: the library goes down.
struct VELK_UNINIT_PARAM {
    uint32_t reserved0;
};

VELK_CONSTANT struct VELKField VELK_UNINIT_FIELDS[] = {
        VELK_FIELD(VELK_UNINIT_PARAM, uint32_t, reserved0, VELK_RESERVED),
};

// Command 33: a vertical sync happened; the event is the message.
struct VELK_VSYNC_PARAM {
    uint32_t reserved0;
    uint32_t reserved4;
};

VELK_CONSTANT struct VELKField VELK_VSYNC_FIELDS[] = {
        VELK_FIELD(VELK_VSYNC_PARAM, uint32_t, reserved0, VELK_RESERVED),
        VELK_FIELD(VELK_VSYNC_PARAM, uint32_t, reserved4, VELK_RESERVED),
};

// Command 34: the camera frame rate.
struct VELK_CAM_FPS_PARAM {
    uint32_t reserved0;
    uint32_t fps;
};

VELK_CONSTANT struct VELKField VELK_CAM_FPS_FIELDS[] = {
        VELK_FIELD(VELK_CAM_FPS_PARAM, uint32_t, reserved0, VELK_RESERVED),
        VELK_FIELD(VELK_CAM_FPS_PARAM, uint32_t, fps, VELK_ANY),
};

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

VELK_CONSTANT struct VELKField VELK_SINGLE_SHOT_FIELDS[] = {
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, int32_t, tid, VELK_ID),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, uclampLevels, VELK_LEVEL),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, int32_t, percentLevel,
                   VELK_BETWEEN(VELK_PERCENT_NONE_ACTIVE, 100)),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, int32_t, requestValue, VELK_ANY),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, int32_t, auxValue, VELK_ANY),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, rangeLevels1, VELK_LEVEL),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, rangeLevels2, VELK_LEVEL),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, rangeLevels3, VELK_LEVEL),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, isReset, VELK_FLAG),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, auxFlag, VELK_FLAG),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, reserved146, VELK_RESERVED),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, criticalTaskIds, VELK_ANY),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, criticalTaskUclamps, VELK_LEVEL),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint32_t, limits, VELK_ANY),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, passFlag, VELK_FLAG),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, sharedFlag, VELK_FLAG),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, uint8_t, reserved326, VELK_RESERVED),
        VELK_FIELD(VELK_SINGLE_SHOT_PARAM, int32_t, extraValues, VELK_ANY),
};

// Commands 36 and 37: a thread starts or ends a critical piece of a task.
struct VELK_CRITICAL_TASK_PARAM {
    int32_t tid;
    int32_t criticalValue;  // 0 at the end
};

VELK_CONSTANT struct VELKField VELK_CRITICAL_START_FIELDS[] = {
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, int32_t, tid, VELK_ID),
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, int32_t, criticalValue,
                   VELK_BETWEEN(1, VELK_MAX_UCLAMP)),
};

VELK_CONSTANT struct VELKField VELK_CRITICAL_END_FIELDS[] = {
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, int32_t, tid, VELK_ID),
        VELK_FIELD(VELK_CRITICAL_TASK_PARAM, int32_t, criticalValue, VELK_ZERO),
};

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

VELK_CONSTANT struct VELKField VELK_ANCHOR_FIELDS[] = {
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, anchor, VELK_ANY),
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, reserved4, VELK_RESERVED),
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, phase,
                   VELK_BETWEEN(VELK_ANCHOR_START, VELK_ANCHOR_END)),
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, reserved12, VELK_RESERVED),
        VELK_FIELD(VELK_ANCHOR_PARAM, uint32_t, serial, VELK_ANY),
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, latencyTarget, VELK_ANY),
        VELK_FIELD(VELK_ANCHOR_PARAM, int32_t, jitterTarget, VELK_ANY),
};

#define VELK_IOC_INIT _IOW('g', 27, struct VELK_INIT_PARAM)
#define VELK_IOC_TASK_INIT _IOW('g', 28, struct VELK_TASK_INIT_PARAM)
#define VELK_IOC_TASK_START _IOW('g', 29, struct VELK_TASK_PARAM)
#define VELK_IOC_TASK_END _IOW('g', 30, struct VELK_TASK_PARAM)
#define VELK_IOC_SCENE_CHANGE _IOW('g', 31, struct VELK_TASK_PARAM)
#define VELK_IOC_UNINIT _IOW('g', 32, struct VELK_UNINIT_PARAM)
#define VELK_IOC_VSYNC _IOW('g', 33, struct VELK_VSYNC_PARAM)
#define VELK_IOC_CAM_FPS _IOW('g', 34, struct VELK_CAM_FPS_PARAM)
#define VELK_IOC_SINGLE_SHOT _IOW('g', 35, struct VELK_SINGLE_SHOT_PARAM)
#define VELK_IOC_CRITICAL_START _IOW('g', 36, struct VELK_CRITICAL_TASK_PARAM)
#define VELK_IOC_CRITICAL_END _IOW('g', 37, struct VELK_CRITICAL_TASK_PARAM)
#define VELK_IOC_ANCHOR _IOW('g', 38, struct VELK_ANCHOR_PARAM)

// The bytes of the largest record.
#define VELK_LARGEST_RECORD sizeof(struct VELK_SINGLE_SHOT_PARAM)

struct VELKCommandRow {
    uint32_t request;
    const char* name;
    const struct VELKField* fields;  // without gaps, from the first byte to the last
    size_t fieldCount;
};

#define VELK_COMMAND(request, name, fields) \
    { request, name, fields, sizeof(fields) / sizeof((fields)[0]) }

// In the order of their numbers, without a gap.
VELK_CONSTANT struct VELKCommandRow VELK_COMMAND_ROWS[] = {
        VELK_COMMAND(VELK_IOC_INIT, "init", VELK_INIT_FIELDS),
        VELK_COMMAND(VELK_IOC_TASK_INIT, "taskInit", VELK_TASK_INIT_FIELDS),
        VELK_COMMAND(VELK_IOC_TASK_START, "taskStart", VELK_TASK_FIELDS),
        VELK_COMMAND(VELK_IOC_TASK_END, "taskEnd", VELK_TASK_FIELDS),
        VELK_COMMAND(VELK_IOC_SCENE_CHANGE, "sceneChange", VELK_SCENE_CHANGE_FIELDS),
        VELK_COMMAND(VELK_IOC_UNINIT, "uninit", VELK_UNINIT_FIELDS),
        VELK_COMMAND(VELK_IOC_VSYNC, "vsync", VELK_VSYNC_FIELDS),
        VELK_COMMAND(VELK_IOC_CAM_FPS, "camFps", VELK_CAM_FPS_FIELDS),
        VELK_COMMAND(VELK_IOC_SINGLE_SHOT, "singleShot", VELK_SINGLE_SHOT_FIELDS),
        VELK_COMMAND(VELK_IOC_CRITICAL_START, "criticalStart", VELK_CRITICAL_START_FIELDS),
        VELK_COMMAND(VELK_IOC_CRITICAL_END, "criticalEnd", VELK_CRITICAL_END_FIELDS),
        VELK_COMMAND(VELK_IOC_ANCHOR, "anchor", VELK_ANCHOR_FIELDS),
};
