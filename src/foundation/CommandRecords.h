/*
 * The control node, its twelve requests and their records, as the driver reads them. Plain C, so
 * that a kernel module can include it.
 *
 * Every record is zeroed before it is filled, so reserved fields are zero. All padding is spelled
 * out: a record has no byte without a name.
 */
#pragma once

#ifdef __KERNEL__
#include <linux/ioctl.h>
#include <linux/types.h>
#else
#include <stdint.h>
#include <sys/ioctl.h>
#endif

#define VELK_NODE_PATH "/proc/velk/velk_ioctl"

// Full capacity on the scheduler's utilisation-clamp scale: the largest uclamp and level.
#define VELK_MAX_UCLAMP 1024
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

// Commands 29, 30 and 31: a thread starts a task, ends it, or meets a scene change within it.
// Commands 29 and 30 leave sceneChangeMode zero.
struct VELK_TASK_PARAM {
    uint32_t tid;
    uint32_t uniqueTaskId;
    uint32_t reserved8;
    uint32_t sceneChangeMode;
};

// Command 32: the library goes down.
struct VELK_UNINIT_PARAM {
    uint32_t reserved0;
};

// Command 33: a vertical sync happened; the event is the message.
struct VELK_VSYNC_PARAM {
    uint32_t reserved0;
    uint32_t reserved4;
};

// Command 34: the camera frame rate.
struct VELK_CAM_FPS_PARAM {
    uint32_t reserved0;
    uint32_t fps;
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

// Commands 36 and 37: a thread starts or ends a critical piece of a task.
struct VELK_CRITICAL_TASK_PARAM {
    int32_t tid;
    int32_t criticalValue;  // 0 at the end
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
