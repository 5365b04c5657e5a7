// SPDX-License-Identifier: GPL-2.0
/*
 * The effect on a thread: its util_min, which the scheduler takes for the least that the thread
 * needs. Policy, priority and nice stay as they are.
 */
#include <linux/sched.h>
#include <uapi/linux/sched/types.h>

#include "velk.h"

#define SAME_POLICY ((u32)-1)
#define NO_UTIL_MIN ((u32)-1) /* back to the default of the thread's policy */

static bool is_realtime(const struct task_struct *task)
{
	const unsigned int policy = READ_ONCE(task->policy);

	return policy == SCHED_FIFO || policy == SCHED_RR;
}

static int set_util_min(struct task_struct *task, u32 util_min)
{
	const struct sched_attr attr = {
		.size = sizeof(attr),
		.sched_policy = SAME_POLICY,
		.sched_nice = task_nice(task),
		.sched_priority = is_realtime(task) ? task->rt_priority : 0,
		.sched_flags =
			SCHED_FLAG_KEEP_POLICY | SCHED_FLAG_KEEP_PARAMS | SCHED_FLAG_UTIL_CLAMP_MIN,
		.sched_util_min = util_min,
	};

	return sched_setattr_nocheck(task, &attr);
}

static int restore(struct velk_clamp *clamp, struct task_struct *task)
{
	if (!clamp->applied)
		return 0;
	clamp->applied = false;
	return set_util_min(task, clamp->own_defined ? clamp->own : NO_UTIL_MIN);
}

/* Reads what the thread has of its own, also when somebody set it since the last boost. */
static void note_own_value(struct velk_clamp *clamp, const struct task_struct *task)
{
	const struct uclamp_se now = task->uclamp_req[UCLAMP_MIN];

	if (clamp->applied && now.user_defined && now.value == clamp->value)
		return;
	clamp->applied = false;
	clamp->own = now.value;
	clamp->own_defined = now.user_defined;
}

/*
 * Gives the thread @boost, 0 for none. Its own util_min is a floor, its util_max a ceiling. A
 * realtime thread without a value of its own counts as full capacity already.
 * Returns 0 or the scheduler's refusal.
 */
int velk_clamp_update(struct velk_clamp *clamp, struct task_struct *task, u32 boost)
{
	int result;

	if (velk_is_exiting(task) || READ_ONCE(task->policy) == SCHED_DEADLINE)
		return 0;
	note_own_value(clamp, task);
	boost = min_t(u32, boost, task->uclamp_req[UCLAMP_MAX].value);
	if (boost <= clamp->own || (is_realtime(task) && !clamp->own_defined))
		return restore(clamp, task);
	if (clamp->applied && clamp->value == boost)
		return 0;
	result = set_util_min(task, boost);
	if (!result) {
		clamp->applied = true;
		clamp->value = boost;
	}
	return result;
}
