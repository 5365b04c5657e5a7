/* SPDX-License-Identifier: GPL-2.0 */
/*
 * Reference driver for the records that a camera service sends: what its files share.
 *
 * Locks: velk_registry_lock, then velk_process.lock. Both pass priority on, because an urgent
 * thread may wait for one that a background thread holds.
 */
#ifndef VELK_H
#define VELK_H

#include <linux/atomic.h>
#include <linux/hashtable.h>
#include <linux/list.h>
#include <linux/pid.h>
#include <linux/rbtree.h>
#include <linux/rtmutex.h>
#include <linux/sched.h>
#include <linux/types.h>

#include "CommandRecords.h"

#define VELK_FIRST_COMMAND 27
#define VELK_COMMAND_COUNT ARRAY_SIZE(VELK_COMMAND_ROWS)

union velk_record {
	u8 bytes[VELK_LARGEST_RECORD];
	struct VELK_INIT_PARAM init;
	struct VELK_TASK_INIT_PARAM task_init;
	struct VELK_TASK_PARAM task;
	struct VELK_UNINIT_PARAM uninit;
	struct VELK_VSYNC_PARAM vsync;
	struct VELK_CAM_FPS_PARAM cam_fps;
	struct VELK_SINGLE_SHOT_PARAM single_shot;
	struct VELK_CRITICAL_TASK_PARAM critical;
	struct VELK_ANCHOR_PARAM anchor;
};

/* A task that the process registered, or tried to. */
struct velk_task {
	struct rb_node node;
	struct list_head runs;
	u32 id;
	bool registered; /* false: every registration was refused */
	u32 uclamp; /* of the last registration */
	u32 control_uclamp; /* what the controls ask for, 0 when not more than uclamp */
	struct list_head in_control; /* while control_uclamp is not 0 */
	char name[sizeof_field(struct VELK_TASK_INIT_PARAM, taskName)];
	u64 starts;
	u64 ends;
};

/* What the driver did to a thread's util_min. */
struct velk_clamp {
	u32 value;
	u32 own; /* what the thread had before */
	bool applied;
	bool own_defined; /* the thread's own value was set by somebody, not the default */
};

/* A thread that runs a task or is inside a critical span. */
struct velk_thread {
	struct hlist_node node;
	struct task_struct *task;
	struct list_head runs;
	bool in_span;
	u32 span_value;
	u32 boost;
	struct velk_clamp clamp;
};

struct velk_run {
	struct list_head in_task;
	struct list_head in_thread;
	struct velk_task *task;
	struct velk_thread *thread;
	u64 since_ns;
};

#define VELK_LEVELS ARRAY_SIZE(((struct VELK_SINGLE_SHOT_PARAM *)0)->uclampLevels)

/* What the single-shot controls in force ask for, as far as it is merged; 0 for nothing. */
struct velk_control {
	u32 uclamp_levels[VELK_LEVELS];
	s32 percent_level;
	s32 request_value;
	bool has_request;
	bool shared;
	u32 limit;
	struct list_head tasks;
};

struct velk_counter {
	atomic64_t accepted;
	atomic64_t refused;
};

/* What a process has told through its open files. */
struct velk_process {
	struct list_head node;
	struct pid *pid;
	unsigned int files; /* under velk_registry_lock */

	struct velk_counter commands[VELK_COMMAND_COUNT];
	atomic64_t other_requests;
	u32 fps;

	struct rt_mutex lock; /* guards the rest */
	bool initialised; /* the last init was taken, and no uninit since */
	bool sender_up; /* the same, but the init may have been refused */
	u32 levels[VELK_LEVELS]; /* those without a control */
	struct velk_control control;
	struct rb_root tasks;
	unsigned int task_count;
	DECLARE_HASHTABLE(threads, 6);
	unsigned int thread_count;
	unsigned int prune_at; /* number of threads */
	unsigned int hold_count; /* runs and open spans */
};

/* Memory that a command may need, allocated before its lock is taken; and what it leaves over. */
struct velk_room {
	struct velk_task *task;
	struct velk_thread *thread;
	struct velk_run *run;
	struct rb_root dropped_tasks;
};

extern struct list_head velk_processes;
extern struct rt_mutex velk_registry_lock;
extern unsigned int velk_max_tasks;
extern unsigned int velk_max_holds;

/* velk_records.c */
const struct VELKCommandRow *velk_find_command(unsigned int request);
int velk_check_record(const struct VELKCommandRow *command, const union velk_record *record,
		      u32 tid);

/* velk_process.c */
struct velk_process *velk_process_open(void);
void velk_process_release(struct velk_process *process);
void velk_forget_dead_processes(void);

/* velk_session.c */
int velk_session_command(struct velk_process *process, const struct VELKCommandRow *command,
			 const union velk_record *record);
void velk_session_clear(struct velk_process *process, struct velk_room *room);
void velk_room_free(struct velk_room *room);
struct velk_task *velk_task_find(struct velk_process *process, u32 id);

/* velk_control.c: callers hold the lock of the process */
void velk_control_merge(struct velk_process *process, const struct VELK_SINGLE_SHOT_PARAM *record);
void velk_control_clear(struct velk_control *control);

/* velk_thread.c: callers hold the lock of the process */
struct velk_thread *velk_thread_find(struct velk_process *process);
int velk_run_add(struct velk_process *process, struct velk_task *task, struct velk_room *room);
void velk_run_drop(struct velk_process *process, struct velk_run *run);
int velk_span_start(struct velk_process *process, u32 value, struct velk_room *room);
void velk_span_end(struct velk_process *process);
void velk_threads_boost(struct velk_process *process);
void velk_threads_drop(struct velk_process *process);
void velk_threads_prune(struct velk_process *process);

/* True from before anybody can have joined the thread. */
static inline bool velk_is_exiting(const struct task_struct *task)
{
	return READ_ONCE(task->flags) & PF_EXITING;
}

/* velk_clamp.c */
#ifdef CONFIG_UCLAMP_TASK
int velk_clamp_update(struct velk_clamp *clamp, struct task_struct *task, u32 boost);
#else
static inline int velk_clamp_update(struct velk_clamp *clamp, struct task_struct *task, u32 boost)
{
	return 0;
}
#endif

/* velk_state.c */
int velk_state_show(struct seq_file *file, void *unused);

#endif
