// SPDX-License-Identifier: GPL-2.0
/* What is refused in a record, judged from its bytes and its caller alone. */
#include <linux/string.h>

#include "velk.h"

bool velk_is_command(unsigned int request)
{
	switch (request) {
	case VELK_IOC_INIT:
	case VELK_IOC_TASK_INIT:
	case VELK_IOC_TASK_START:
	case VELK_IOC_TASK_END:
	case VELK_IOC_SCENE_CHANGE:
	case VELK_IOC_UNINIT:
	case VELK_IOC_VSYNC:
	case VELK_IOC_CAM_FPS:
	case VELK_IOC_SINGLE_SHOT:
	case VELK_IOC_CRITICAL_START:
	case VELK_IOC_CRITICAL_END:
	case VELK_IOC_ANCHOR:
		return true;
	default:
		return false;
	}
}

static bool are_levels(const u32 *levels, size_t count)
{
	size_t i;

	for (i = 0; i < count; i++) {
		if (levels[i] > VELK_MAX_UCLAMP)
			return false;
	}
	return true;
}

static bool is_init_valid(const struct VELK_INIT_PARAM *record)
{
	return are_levels(record->clusterLevels, ARRAY_SIZE(record->clusterLevels)) &&
	       record->tuningParam1 > 0 && record->tuningParam2 > 0;
}

/* Terminated, and zero up to its end. */
static bool is_name_valid(const char *name, size_t size)
{
	size_t length = strnlen(name, size);

	return length < size && !memchr_inv(name + length, 0, size - length);
}

static bool is_task_init_valid(const struct VELK_TASK_INIT_PARAM *record)
{
	return record->uniqueTaskId && !record->reserved4 && !record->reserved20 &&
	       !memchr_inv(record->reserved37, 0, sizeof(record->reserved37)) &&
	       record->defaultUclamp >= 1 && record->defaultUclamp <= VELK_MAX_UCLAMP &&
	       record->targetTime >= VELK_MIN_TARGET_TIME && record->isVIPTask <= 1 &&
	       is_name_valid(record->taskName, sizeof(record->taskName));
}

static bool is_task_valid(const struct VELK_TASK_PARAM *record, bool has_mode, u32 tid)
{
	return record->tid == tid && record->uniqueTaskId && !record->reserved8 &&
	       (has_mode || !record->sceneChangeMode);
}

/* The ids fill their array from the front, and behind them both arrays are zero. */
static bool are_critical_tasks_valid(const struct VELK_SINGLE_SHOT_PARAM *record)
{
	const size_t count = ARRAY_SIZE(record->criticalTaskIds);
	size_t used = 0;
	size_t i;

	while (used < count && record->criticalTaskIds[used])
		used++;
	for (i = used; i < count; i++) {
		if (record->criticalTaskIds[i] || record->criticalTaskUclamps[i])
			return false;
	}
	return are_levels(record->criticalTaskUclamps, used);
}

static bool is_single_shot_valid(const struct VELK_SINGLE_SHOT_PARAM *record, u32 tid)
{
	return (u32)record->tid == tid && !record->reserved146[0] && !record->reserved146[1] &&
	       !record->reserved326[0] && !record->reserved326[1] &&
	       are_levels(record->uclampLevels, ARRAY_SIZE(record->uclampLevels)) &&
	       are_levels(record->rangeLevels1, ARRAY_SIZE(record->rangeLevels1)) &&
	       are_levels(record->rangeLevels2, ARRAY_SIZE(record->rangeLevels2)) &&
	       are_levels(record->rangeLevels3, ARRAY_SIZE(record->rangeLevels3)) &&
	       record->percentLevel >= VELK_PERCENT_NONE_ACTIVE && record->percentLevel <= 100 &&
	       record->isReset <= 1 && record->auxFlag <= 1 && record->passFlag <= 1 &&
	       record->sharedFlag <= 1 && are_critical_tasks_valid(record);
}

static bool is_critical_start_valid(const struct VELK_CRITICAL_TASK_PARAM *record, u32 tid)
{
	return (u32)record->tid == tid && record->criticalValue >= 1 &&
	       record->criticalValue <= VELK_MAX_UCLAMP;
}

static bool is_critical_end_valid(const struct VELK_CRITICAL_TASK_PARAM *record, u32 tid)
{
	return (u32)record->tid == tid && !record->criticalValue;
}

static bool is_anchor_valid(const struct VELK_ANCHOR_PARAM *record)
{
	if (record->reserved4 || record->reserved12)
		return false;
	return record->phase == VELK_ANCHOR_START ||
	       (record->phase == VELK_ANCHOR_END && !record->latencyTarget);
}

static bool is_valid(unsigned int request, const union velk_record *record, u32 tid)
{
	switch (request) {
	case VELK_IOC_INIT:
		return is_init_valid(&record->init);
	case VELK_IOC_TASK_INIT:
		return is_task_init_valid(&record->task_init);
	case VELK_IOC_TASK_START:
	case VELK_IOC_TASK_END:
		return is_task_valid(&record->task, false, tid);
	case VELK_IOC_SCENE_CHANGE:
		return is_task_valid(&record->task, true, tid);
	case VELK_IOC_UNINIT:
		return !record->uninit.reserved0;
	case VELK_IOC_VSYNC:
		return !record->vsync.reserved0 && !record->vsync.reserved4;
	case VELK_IOC_CAM_FPS:
		return !record->cam_fps.reserved0;
	case VELK_IOC_SINGLE_SHOT:
		return is_single_shot_valid(&record->single_shot, tid);
	case VELK_IOC_CRITICAL_START:
		return is_critical_start_valid(&record->critical, tid);
	case VELK_IOC_CRITICAL_END:
		return is_critical_end_valid(&record->critical, tid);
	case VELK_IOC_ANCHOR:
		return is_anchor_valid(&record->anchor);
	default:
		return false;
	}
}

/* 0 or -EINVAL. @tid is the calling thread. */
int velk_check_record(unsigned int request, const union velk_record *record, u32 tid)
{
	return is_valid(request, record, tid) ? 0 : -EINVAL;
}
