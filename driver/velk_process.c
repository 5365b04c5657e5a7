// SPDX-License-Identifier: GPL-2.0
/*
 * The processes that have the node open. All open files of a process share one state, which goes
 * with the last of them.
 *
 * A file can outlive its process in a child that inherited it, and procfs has no flush operation
 * that would tell. So whoever opens the node or reads the state looks for processes that died.
 */
#include <linux/rcupdate.h>
#include <linux/sched/signal.h>
#include <linux/slab.h>

#include "velk.h"

LIST_HEAD(velk_processes);
DEFINE_RT_MUTEX(velk_registry_lock);

static bool is_dead(const struct velk_process *process)
{
	struct task_struct *leader;
	bool dead;

	rcu_read_lock();
	leader = pid_task(process->pid, PIDTYPE_TGID);
	dead = !leader || !atomic_read(&leader->signal->live);
	rcu_read_unlock();
	return dead;
}

/* Takes the process from the registry, and every boost from its threads. */
static void retire(struct velk_process *process)
{
	struct velk_room room = { .dropped_tasks = RB_ROOT };

	list_del_init(&process->node);
	rt_mutex_lock(&process->lock);
	velk_session_clear(process, &room);
	rt_mutex_unlock(&process->lock);
	velk_room_free(&room);
}

/* The caller holds velk_registry_lock. */
void velk_forget_dead_processes(void)
{
	struct velk_process *process;
	struct velk_process *next;

	list_for_each_entry_safe(process, next, &velk_processes, node) {
		if (is_dead(process))
			retire(process);
	}
}

static struct velk_process *find_current(void)
{
	struct velk_process *process;

	list_for_each_entry(process, &velk_processes, node) {
		if (process->pid == task_tgid(current))
			return process;
	}
	return NULL;
}

static struct velk_process *add_current(struct velk_process *process)
{
	process->pid = get_pid(task_tgid(current));
	rt_mutex_init(&process->lock);
	process->tasks = RB_ROOT;
	INIT_LIST_HEAD(&process->control.tasks);
	hash_init(process->threads);
	list_add_tail(&process->node, &velk_processes);
	return process;
}

/* The state of the calling process for one more file. Null without memory. */
struct velk_process *velk_process_open(void)
{
	struct velk_process *spare = kzalloc(sizeof(*spare), GFP_KERNEL_ACCOUNT);
	struct velk_process *process;

	if (!spare)
		return NULL;
	rt_mutex_lock(&velk_registry_lock);
	velk_forget_dead_processes();
	process = find_current();
	if (!process) {
		process = add_current(spare);
		spare = NULL;
	}
	process->files++;
	rt_mutex_unlock(&velk_registry_lock);
	kfree(spare);
	return process;
}

void velk_process_release(struct velk_process *process)
{
	bool is_last;

	rt_mutex_lock(&velk_registry_lock);
	is_last = --process->files == 0;
	if (is_last)
		retire(process);
	rt_mutex_unlock(&velk_registry_lock);
	if (is_last) {
		put_pid(process->pid);
		kfree(process);
	}
}
