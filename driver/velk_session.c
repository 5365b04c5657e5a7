// SPDX-License-Identifier: GPL-2.0
/*
 * What the commands of a process do: they register tasks, start and end runs and critical spans,
 * and bring controls. Odd orders are taken; what cannot be meant is refused.
 */
#include <linux/slab.h>
#include <linux/string.h>

#include "velk.h"

static int compare_ids(const void *id, const struct rb_node *node)
{
	const u32 wanted = *(const u32 *)id;
	const u32 here = rb_entry(node, struct velk_task, node)->id;

	return wanted < here ? -1 : wanted > here;
}

static int compare_tasks(struct rb_node *added, const struct rb_node *node)
{
	return compare_ids(&rb_entry(added, struct velk_task, node)->id, node);
}

struct velk_task *velk_task_find(struct velk_process *process, u32 id)
{
	return rb_entry_safe(rb_find(&id, &process->tasks, compare_ids), struct velk_task, node);
}

/* Null when the process has too many tasks. */
static struct velk_task *find_or_add_task(struct velk_process *process, u32 id,
					  struct velk_room *room)
{
	struct velk_task *task = velk_task_find(process, id);

	if (task)
		return task;
	if (process->task_count >= velk_max_tasks)
		return NULL;
	task = room->task;
	room->task = NULL;
	task->id = id;
	INIT_LIST_HEAD(&task->runs);
	INIT_LIST_HEAD(&task->in_control);
	rb_find_add(&task->node, &process->tasks, compare_tasks);
	process->task_count++;
	return task;
}

/* Forgets tasks, runs, spans and control. The tasks are freed with the room. */
void velk_session_clear(struct velk_process *process, struct velk_room *room)
{
	process->initialised = false;
	velk_threads_drop(process);
	velk_control_clear(&process->control);
	memset(process->levels, 0, sizeof(process->levels));
	room->dropped_tasks = process->tasks;
	process->tasks = RB_ROOT;
	process->task_count = 0;
}

static int init(struct velk_process *process, const struct VELK_INIT_PARAM *record,
		struct velk_room *room)
{
	velk_session_clear(process, room);
	memcpy(process->levels, record->clusterLevels, sizeof(record->clusterLevels));
	process->initialised = true;
	process->sender_up = true;
	return 0;
}

static int register_task(struct velk_process *process, const struct VELK_TASK_INIT_PARAM *record,
			 struct velk_room *room)
{
	struct velk_task *task = find_or_add_task(process, record->uniqueTaskId, room);

	if (!task)
		return -ENOSPC;
	task->registered = true;
	task->uclamp = record->defaultUclamp;
	memcpy(task->name, record->taskName, sizeof(task->name));
	velk_threads_boost(process);
	return 0;
}

static struct velk_run *find_run(struct velk_task *task)
{
	struct velk_run *run;

	list_for_each_entry(run, &task->runs, in_task) {
		if (run->thread->task == current)
			return run;
	}
	return NULL;
}

static int start_task(struct velk_process *process, u32 id, struct velk_room *room)
{
	struct velk_task *task = velk_task_find(process, id);
	int result = 0;

	if (!task)
		return -EINVAL;
	if (!find_run(task))
		result = velk_run_add(process, task, room);
	if (!result)
		task->starts++;
	return result;
}

static void end_run(struct velk_process *process, struct velk_run *run)
{
	run->task->ends++;
	velk_run_drop(process, run);
}

/* A thread that does not run the task ends it on all others: for the sender it has ended. */
static int end_task(struct velk_process *process, u32 id)
{
	struct velk_task *task = velk_task_find(process, id);
	struct velk_run *run;
	struct velk_run *next;

	if (!task)
		return -EINVAL;
	run = find_run(task);
	if (run) {
		end_run(process, run);
		return 0;
	}
	list_for_each_entry_safe(run, next, &task->runs, in_task)
		end_run(process, run);
	return 0;
}

/* Tasks and runs stay for notifications that are still under way, without any effect. */
static int uninit(struct velk_process *process)
{
	process->initialised = false;
	process->sender_up = false;
	velk_control_clear(&process->control);
	memset(process->levels, 0, sizeof(process->levels));
	velk_threads_boost(process);
	return 0;
}

/* While its library is down, a sender does not merge: the record replaces what was there. */
static int take_control(struct velk_process *process, const struct VELK_SINGLE_SHOT_PARAM *record)
{
	if (!process->sender_up)
		velk_control_clear(&process->control);
	velk_control_merge(process, record);
	velk_threads_boost(process);
	return 0;
}

static int accept(struct velk_process *process, unsigned int request,
		  const union velk_record *record, struct velk_room *room)
{
	switch (request) {
	case VELK_IOC_INIT:
		return init(process, &record->init, room);
	case VELK_IOC_TASK_INIT:
		return register_task(process, &record->task_init, room);
	case VELK_IOC_TASK_START:
		return start_task(process, record->task.uniqueTaskId, room);
	case VELK_IOC_TASK_END:
		return end_task(process, record->task.uniqueTaskId);
	case VELK_IOC_SCENE_CHANGE:
		return velk_task_find(process, record->task.uniqueTaskId) ? 0 : -EINVAL;
	case VELK_IOC_UNINIT:
		return uninit(process);
	case VELK_IOC_SINGLE_SHOT:
		return take_control(process, &record->single_shot);
	case VELK_IOC_CRITICAL_START:
		return velk_span_start(process, record->critical.criticalValue, room);
	case VELK_IOC_CRITICAL_END:
		velk_span_end(process);
		return 0;
	default:
		return 0;
	}
}

/* A task that was never taken is known all the same: the sender goes on with it. */
static void note_refused_task(struct velk_process *process,
			      const struct VELK_TASK_INIT_PARAM *record, struct velk_room *room)
{
	struct velk_task *task = find_or_add_task(process, record->uniqueTaskId, room);

	if (task && !task->registered)
		task->uclamp = record->defaultUclamp;
}

/* The sender goes on after a refusal: its library is up or down then, or has the task. */
static void note_refusal(struct velk_process *process, unsigned int request,
			 const union velk_record *record, struct velk_room *room)
{
	switch (request) {
	case VELK_IOC_INIT:
		velk_session_clear(process, room);
		process->sender_up = true;
		break;
	case VELK_IOC_UNINIT:
		process->sender_up = false;
		break;
	case VELK_IOC_TASK_INIT:
		note_refused_task(process, &record->task_init, room);
		break;
	}
}

static bool room_fill(struct velk_room *room, unsigned int request)
{
	const gfp_t flags = GFP_KERNEL_ACCOUNT | __GFP_ZERO;

	switch (request) {
	case VELK_IOC_TASK_INIT:
		room->task = kmalloc(sizeof(*room->task), flags);
		return room->task;
	case VELK_IOC_TASK_START:
		room->run = kmalloc(sizeof(*room->run), flags);
		room->thread = kmalloc(sizeof(*room->thread), flags);
		return room->run && room->thread;
	case VELK_IOC_CRITICAL_START:
		room->thread = kmalloc(sizeof(*room->thread), flags);
		return room->thread;
	default:
		return true;
	}
}

void velk_room_free(struct velk_room *room)
{
	struct velk_task *task;
	struct velk_task *next;

	kfree(room->task);
	kfree(room->thread);
	kfree(room->run);
	rbtree_postorder_for_each_entry_safe(task, next, &room->dropped_tasks, node)
		kfree(task);
}

/* Commands that leave nothing behind but the frame rate take no lock: they are urgent. */
static bool is_lockless(unsigned int request)
{
	return request == VELK_IOC_VSYNC || request == VELK_IOC_CAM_FPS ||
	       request == VELK_IOC_ANCHOR;
}

/* Judges and does a command of the calling thread. Returns 0 or a negative error number. */
int velk_session_command(struct velk_process *process, const struct VELKCommandRow *command,
			 const union velk_record *record)
{
	const unsigned int request = command->request;
	struct velk_room room = { .dropped_tasks = RB_ROOT };
	int result = velk_check_record(command, record, task_pid_vnr(current));

	if (is_lockless(request)) {
		if (!result && request == VELK_IOC_CAM_FPS)
			WRITE_ONCE(process->fps, record->cam_fps.fps);
		return result;
	}
	if (!room_fill(&room, request)) {
		velk_room_free(&room);
		return -ENOMEM;
	}
	rt_mutex_lock(&process->lock);
	if (result)
		note_refusal(process, request, record, &room);
	else
		result = accept(process, request, record, &room);
	rt_mutex_unlock(&process->lock);
	velk_room_free(&room);
	return result;
}
