// SPDX-License-Identifier: GPL-2.0
/* /proc/velk/state: what the driver knows, a line for each thing, for people and programs. */
#include <linux/sched/task.h>
#include <linux/seq_file.h>
#include <linux/timekeeping.h>

#include "velk.h"

static void show_counters(struct seq_file *file, struct velk_process *process)
{
	size_t i;

	for (i = 0; i < VELK_COMMAND_COUNT; i++) {
		const u64 accepted = atomic64_read(&process->commands[i].accepted);
		const u64 refused = atomic64_read(&process->commands[i].refused);

		if (accepted || refused)
			seq_printf(file, "  command %s accepted=%llu refused=%llu\n",
				   VELK_COMMAND_ROWS[i].name, accepted, refused);
	}
}

/* Names come from the caller: what is not printable is escaped. */
static void show_task(struct seq_file *file, const struct velk_task *task)
{
	const int length = strnlen(task->name, sizeof(task->name));

	seq_printf(file,
		   "  task %u registered=%d uclamp=%u control=%u starts=%llu ends=%llu name=%*pE\n",
		   task->id, task->registered, task->uclamp, task->control_uclamp, task->starts,
		   task->ends, length, task->name);
}

static void show_tasks(struct seq_file *file, struct velk_process *process)
{
	struct rb_node *node;

	for (node = rb_first(&process->tasks); node; node = rb_next(node)) {
		if (seq_has_overflowed(file))
			return; /* the caller begins again with more room */
		show_task(file, rb_entry(node, struct velk_task, node));
	}
}

static void show_thread(struct seq_file *file, const struct velk_thread *thread)
{
	const pid_t tid = task_pid_vnr(thread->task);
	const u64 now = ktime_get_ns();
	const struct velk_run *run;

	seq_printf(file, "  thread %d boost=%u", tid, thread->boost);
	if (IS_ENABLED(CONFIG_UCLAMP_TASK))
		seq_printf(file, " applied=%u own=%u",
			   thread->clamp.applied ? thread->clamp.value : 0, thread->clamp.own);
	seq_putc(file, '\n');
	list_for_each_entry(run, &thread->runs, in_thread)
		seq_printf(file, "  run %d task=%u since_us=%llu\n", tid, run->task->id,
			   div_u64(now - run->since_ns, 1000));
	if (thread->in_span)
		seq_printf(file, "  span %d value=%u\n", tid, thread->span_value);
}

static void show_control(struct seq_file *file, const struct velk_control *control)
{
	size_t i;

	seq_puts(file, "  control uclampLevels=");
	for (i = 0; i < VELK_LEVELS; i++)
		seq_printf(file, i ? ",%u" : "%u", control->uclamp_levels[i]);
	seq_printf(file, " percentLevel=%d limit=%u sharedFlag=%d", control->percent_level,
		   control->limit, control->shared);
	if (control->has_request)
		seq_printf(file, " requestValue=%d", control->request_value);
	seq_putc(file, '\n');
}

static void show_process(struct seq_file *file, struct velk_process *process)
{
	struct velk_thread *thread;
	int bucket;

	velk_threads_prune(process);
	seq_printf(file, "process %d files=%u initialised=%d tasks=%u threads=%u",
		   pid_vnr(process->pid), process->files, process->initialised, process->task_count,
		   process->thread_count);
	seq_printf(file, " fps=%u other_requests=%llu\n", READ_ONCE(process->fps),
		   (u64)atomic64_read(&process->other_requests));
	show_counters(file, process);
	show_tasks(file, process);
	hash_for_each(process->threads, bucket, thread, node)
		show_thread(file, thread);
	show_control(file, &process->control);
}

int velk_state_show(struct seq_file *file, void *unused)
{
	struct velk_process *process;

	seq_printf(file, "velk 1 clamps=%d\n", IS_ENABLED(CONFIG_UCLAMP_TASK));
	rt_mutex_lock(&velk_registry_lock);
	velk_forget_dead_processes();
	list_for_each_entry(process, &velk_processes, node) {
		rt_mutex_lock(&process->lock);
		show_process(file, process);
		rt_mutex_unlock(&process->lock);
	}
	rt_mutex_unlock(&velk_registry_lock);
	return 0;
}
