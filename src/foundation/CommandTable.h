/*
 * The twelve commands of the control node: number, request value, record size and name. This is
 * the one table that the sender, every decoder and every check of the wire read.
 */
#pragma once

#include <sys/ioctl.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/CommandRecords.h"

inline constexpr const char* VELK_NODE_PATH = "/proc/velk/velk_ioctl";

inline constexpr uint32_t VELK_IOC_INIT = _IOW('g', 27, VELK_INIT_PARAM);
inline constexpr uint32_t VELK_IOC_TASK_INIT = _IOW('g', 28, VELK_TASK_INIT_PARAM);
inline constexpr uint32_t VELK_IOC_TASK_START = _IOW('g', 29, VELK_TASK_PARAM);
inline constexpr uint32_t VELK_IOC_TASK_END = _IOW('g', 30, VELK_TASK_PARAM);
inline constexpr uint32_t VELK_IOC_SCENE_CHANGE = _IOW('g', 31, VELK_TASK_PARAM);
inline constexpr uint32_t VELK_IOC_UNINIT = _IOW('g', 32, VELK_UNINIT_PARAM);
inline constexpr uint32_t VELK_IOC_VSYNC = _IOW('g', 33, VELK_VSYNC_PARAM);
inline constexpr uint32_t VELK_IOC_CAM_FPS = _IOW('g', 34, VELK_CAM_FPS_PARAM);
inline constexpr uint32_t VELK_IOC_SINGLE_SHOT = _IOW('g', 35, VELK_SINGLE_SHOT_PARAM);
inline constexpr uint32_t VELK_IOC_CRITICAL_START = _IOW('g', 36, VELK_CRITICAL_TASK_PARAM);
inline constexpr uint32_t VELK_IOC_CRITICAL_END = _IOW('g', 37, VELK_CRITICAL_TASK_PARAM);
inline constexpr uint32_t VELK_IOC_ANCHOR = _IOW('g', 38, VELK_ANCHOR_PARAM);

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
