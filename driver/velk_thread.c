// SPDX-License-Identifier: GPL-2.0
/*
 * The threads that run a task or are inside a critical span, and the boost that each of them gets:
 * the largest of what its tasks, the control's critical tasks and its span ask for.
 *
 * A thread is known by its task_struct rather than its number, which another thread may inherit.
 */
#include <linux/sched/task.h>
#include <linux/slab.h>
#include <linux/timekeeping.h>

#include "velk.h"
#include "velk_trace.h"

#define FIRST_PRUNE 64

/* The calling thread, or null. */
struct velk_thread *velk_thread_find(struct velk_process *process)
{
	struct velk_thread *thread;

	hash_for_each_possible(process->threads, thread, node, (unsigned long)current) {
		if (thread->task == current)
			return thread;
	}
	return NULL;
}

static struct velk_thread *add_current(struct velk_process *process, struct velk_room *room)
{
	struct velk_thread *thread = room->thread;

	room->thread = NULL;
	thread->task = get_task_struct(current);
	INIT_LIST_HEAD(&thread->runs);
	hash_add(process->threads, &thread->node, (unsigned long)current);
	process->thread_count++;
	return thread;
}

static u32 task_boost(const struct velk_task *task)
{
	return max(task->registered ? task->uclamp : 0, task->control_uclamp);
}

static u32 wanted_boost(const struct velk_process *process, const struct velk_thread *thread)
{
	u32 boost = thread->in_span ? thread->span_value : 0;
	const struct velk_run *run;

	if (!process->initialised)
		return 0;
	list_for_each_entry(run, &thread->runs, in_thread)
		boost = max(boost, task_boost(run->task));
	return boost;
}

static void update_boost(struct velk_process *process, struct velk_thread *thread)
{
	const struct velk_clamp before = thread->clamp;
	const u32 boost = wanted_boost(process, thread);
	const int result = velk_clamp_update(&thread->clamp, thread->task, boost);

	if (boost != thread->boost || before.applied != thread->clamp.applied ||
	    before.value != thread->clamp.value)
		trace_velk_boost(thread->task, boost, &thread->clamp, result);
	thread->boost = boost;
}

/* Follows what the thread holds now, and forgets a thread that holds nothing. */
static void settle(struct velk_process *process, struct velk_thread *thread)
{
	update_boost(process, thread);
	if (thread->in_span || !list_empty(&thread->runs))
		return;
	hash_del(&thread->node);
	process->thread_count--;
	put_task_struct(thread->task);
	kfree(thread);
}

void velk_threads_boost(struct velk_process *process)
{
	struct velk_thread *thread;
	int bucket;

	hash_for_each(process->threads, bucket, thread, node)
		update_boost(process, thread);
}

static void free_run(struct velk_process *process, struct velk_run *run)
{
	list_del(&run->in_task);
	list_del(&run->in_thread);
	kfree(run);
	process->hold_count--;
}

static void drop_thread(struct velk_process *process, struct velk_thread *thread)
{
	struct velk_run *run;
	struct velk_run *next;

	list_for_each_entry_safe(run, next, &thread->runs, in_thread)
		free_run(process, run);
	process->hold_count -= thread->in_span;
	thread->in_span = false;
	settle(process, thread);
}

void velk_threads_drop(struct velk_process *process)
{
	struct velk_thread *thread;
	struct hlist_node *next;
	int bucket;

	hash_for_each_safe(process->threads, bucket, next, thread, node)
		drop_thread(process, thread);
}

/* Forgets the threads that have died. */
void velk_threads_prune(struct velk_process *process)
{
	struct velk_thread *thread;
	struct hlist_node *next;
	int bucket;

	hash_for_each_safe(process->threads, bucket, next, thread, node) {
		if (velk_is_exiting(thread->task))
			drop_thread(process, thread);
	}
}

/*
 * Finds or adds the calling thread for one more run or span. Threads that died inside a task are
 * forgotten whenever the threads have doubled, so that they never keep much memory.
 */
static struct velk_thread *hold_current(struct velk_process *process, struct velk_room *room)
{
	struct velk_thread *thread;

	if (process->thread_count >= max_t(unsigned int, process->prune_at, FIRST_PRUNE) ||
	    process->hold_count >= velk_max_holds) {
		velk_threads_prune(process);
		process->prune_at = 2 * process->thread_count;
	}
	if (process->hold_count >= velk_max_holds)
		return NULL;
	process->hold_count++;
	thread = velk_thread_find(process);
	return thread ? thread : add_current(process, room);
}

/* The calling thread runs the task from now on. Returns 0 or -ENOSPC. */
int velk_run_add(struct velk_process *process, struct velk_task *task, struct velk_room *room)
{
	struct velk_thread *thread = hold_current(process, room);
	struct velk_run *run = room->run;

	if (!thread)
		return -ENOSPC;
	room->run = NULL;
	run->task = task;
	run->thread = thread;
	run->since_ns = ktime_get_ns();
	list_add_tail(&run->in_task, &task->runs);
	list_add_tail(&run->in_thread, &thread->runs);
	update_boost(process, thread);
	return 0;
}

void velk_run_drop(struct velk_process *process, struct velk_run *run)
{
	struct velk_thread *thread = run->thread;

	free_run(process, run);
	settle(process, thread);
}

/* The calling thread opens a critical span, or changes its value. Returns 0 or -ENOSPC. */
int velk_span_start(struct velk_process *process, u32 value, struct velk_room *room)
{
	struct velk_thread *thread = velk_thread_find(process);

	if (!thread || !thread->in_span) {
		thread = hold_current(process, room);
		if (!thread)
			return -ENOSPC;
	}
	thread->in_span = true;
	thread->span_value = value;
	update_boost(process, thread);
	return 0;
}

void velk_span_end(struct velk_process *process)
{
	struct velk_thread *thread = velk_thread_find(process);

	if (!thread || !thread->in_span)
		return;
	thread->in_span = false;
	process->hold_count--;
	settle(process, thread);
}
