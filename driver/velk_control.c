// SPDX-License-Identifier: GPL-2.0
/*
 * The single-shot controls in force, as their sender merged them.
 *
 * A value in a record is merged over all controls in force, so it replaces the value before it. A
 * value that the record does not ask for stays. What is sent unmerged (ranges, auxiliary values,
 * flags other than the shared one) is not kept.
 */
#include <linux/string.h>

#include "velk.h"

static void merge_values(struct velk_process *process, const struct VELK_SINGLE_SHOT_PARAM *record)
{
	struct velk_control *control = &process->control;
	size_t i;

	for (i = 0; i < VELK_LEVELS; i++) {
		const u32 level = record->uclampLevels[i];

		if (level)
			control->uclamp_levels[i] = level > process->levels[i] ? level : 0;
	}
	if (record->percentLevel != VELK_NO_REQUEST)
		control->percent_level = max(record->percentLevel, 0);
	if (record->requestValue != VELK_NO_REQUEST) {
		control->has_request = record->requestValue != VELK_REQUEST_RELEASED;
		control->request_value = record->requestValue;
	}
	if (record->limits[0])
		control->limit =
			record->limits[0] == VELK_LIMIT_NONE_ACTIVE ? 0 : record->limits[0];
	if (record->sharedFlag)
		control->shared = !record->isReset; /* a reset tells that the last holder went */
}

/* What the record asks for the task: the largest, should it name the task twice. */
static u32 uclamp_in(const struct VELK_SINGLE_SHOT_PARAM *record, u32 task_id)
{
	u32 uclamp = 0;
	size_t i;

	for (i = 0; i < ARRAY_SIZE(record->criticalTaskIds); i++) {
		if (record->criticalTaskIds[i] == task_id)
			uclamp = max(uclamp, record->criticalTaskUclamps[i]);
	}
	return uclamp;
}

static void merge_task(struct velk_control *control, struct velk_task *task, u32 uclamp)
{
	task->control_uclamp = uclamp > task->uclamp ? uclamp : 0;
	list_del_init(&task->in_control);
	if (task->control_uclamp)
		list_add_tail(&task->in_control, &control->tasks);
}

/* The boosts of the threads are the caller's to follow up. */
void velk_control_merge(struct velk_process *process, const struct VELK_SINGLE_SHOT_PARAM *record)
{
	size_t i;

	merge_values(process, record);
	for (i = 0; i < ARRAY_SIZE(record->criticalTaskIds) && record->criticalTaskIds[i]; i++) {
		const u32 id = record->criticalTaskIds[i];
		struct velk_task *task = velk_task_find(process, id);

		if (task)
			merge_task(&process->control, task, uclamp_in(record, id));
	}
}

void velk_control_clear(struct velk_control *control)
{
	struct velk_task *task;
	struct velk_task *next;

	list_for_each_entry_safe(task, next, &control->tasks, in_control) {
		task->control_uclamp = 0;
		list_del_init(&task->in_control);
	}
	memset(control, 0, sizeof(*control));
	INIT_LIST_HEAD(&control->tasks);
}
