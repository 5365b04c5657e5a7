/*
 * The twelve commands of the control node: number, request value, record size and name. This is
 * the one table that the sender, every decoder and every check of the wire read.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/CommandRecords.h"

static_assert(sizeof(VELK_INIT_PARAM) == 36);
static_assert(offsetof(VELK_INIT_PARAM, driverParam) == 0);
static_assert(offsetof(VELK_INIT_PARAM, clusterLevels) == 4);
static_assert(offsetof(VELK_INIT_PARAM, maxEfficientFreqs) == 16);
static_assert(offsetof(VELK_INIT_PARAM, tuningParam1) == 28);
static_assert(offsetof(VELK_INIT_PARAM, tuningParam2) == 32);
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
static_assert(sizeof(VELK_TASK_PARAM) == 16);
static_assert(offsetof(VELK_TASK_PARAM, tid) == 0);
static_assert(offsetof(VELK_TASK_PARAM, uniqueTaskId) == 4);
static_assert(offsetof(VELK_TASK_PARAM, reserved8) == 8);
static_assert(offsetof(VELK_TASK_PARAM, sceneChangeMode) == 12);
static_assert(sizeof(VELK_UNINIT_PARAM) == 4);
static_assert(offsetof(VELK_UNINIT_PARAM, reserved0) == 0);
static_assert(sizeof(VELK_VSYNC_PARAM) == 8);
static_assert(offsetof(VELK_VSYNC_PARAM, reserved0) == 0);
static_assert(offsetof(VELK_VSYNC_PARAM, reserved4) == 4);
static_assert(sizeof(VELK_CAM_FPS_PARAM) == 8);
static_assert(offsetof(VELK_CAM_FPS_PARAM, reserved0) == 0);
static_assert(offsetof(VELK_CAM_FPS_PARAM, fps) == 4);
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
static_assert(sizeof(VELK_CRITICAL_TASK_PARAM) == 8);
static_assert(offsetof(VELK_CRITICAL_TASK_PARAM, tid) == 0);
static_assert(offsetof(VELK_CRITICAL_TASK_PARAM, criticalValue) == 4);
static_assert(sizeof(VELK_ANCHOR_PARAM) == 28);
static_assert(offsetof(VELK_ANCHOR_PARAM, anchor) == 0);
static_assert(offsetof(VELK_ANCHOR_PARAM, reserved4) == 4);
static_assert(offsetof(VELK_ANCHOR_PARAM, phase) == 8);
static_assert(offsetof(VELK_ANCHOR_PARAM, reserved12) == 12);
static_assert(offsetof(VELK_ANCHOR_PARAM, serial) == 16);
static_assert(offsetof(VELK_ANCHOR_PARAM, latencyTarget) == 20);
static_assert(offsetof(VELK_ANCHOR_PARAM, jitterTarget) == 24);

static_assert(VELK_IOC_INIT == 0x4024671B);
static_assert(VELK_IOC_TASK_INIT == 0x4028671C);
static_assert(VELK_IOC_TASK_START == 0x4010671D);
static_assert(VELK_IOC_TASK_END == 0x4010671E);
static_assert(VELK_IOC_SCENE_CHANGE == 0x4010671F);
static_assert(VELK_IOC_UNINIT == 0x40046720);
static_assert(VELK_IOC_VSYNC == 0x40086721);
static_assert(VELK_IOC_CAM_FPS == 0x40086722);
static_assert(VELK_IOC_SINGLE_SHOT == 0x41546723);
static_assert(VELK_IOC_CRITICAL_START == 0x40086724);
static_assert(VELK_IOC_CRITICAL_END == 0x40086725);
static_assert(VELK_IOC_ANCHOR == 0x401C6726);

// Whether the driver gets every bit of the record as the sender has set it.
template <typename Record>
inline constexpr bool isWireRecord = std::has_unique_object_representations_v<Record>;

struct VELKCommand {
    uint32_t request;
    const char* name;
    uint32_t number = _IOC_NR(request);
    size_t recordSize = _IOC_SIZE(request);
};

// In the order of their numbers, without a gap.
inline constexpr std::array<VELKCommand, 12> VELK_COMMANDS = {{
        {VELK_IOC_INIT, "init"},
        {VELK_IOC_TASK_INIT, "taskInit"},
        {VELK_IOC_TASK_START, "taskStart"},
        {VELK_IOC_TASK_END, "taskEnd"},
        {VELK_IOC_SCENE_CHANGE, "sceneChange"},
        {VELK_IOC_UNINIT, "uninit"},
        {VELK_IOC_VSYNC, "vsync"},
        {VELK_IOC_CAM_FPS, "camFps"},
        {VELK_IOC_SINGLE_SHOT, "singleShot"},
        {VELK_IOC_CRITICAL_START, "criticalStart"},
        {VELK_IOC_CRITICAL_END, "criticalEnd"},
        {VELK_IOC_ANCHOR, "anchor"},
}};
