// SPDX-License-Identifier: GPL-2.0
/* The node that a camera service writes its records to, and the state beside it. */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/compat.h>
#include <linux/cred.h>
#include <linux/fs.h>
#include <linux/module.h>
#include <linux/proc_fs.h>
#include <linux/seq_file.h>
#include <linux/uaccess.h>

#include "velk.h"

#define CREATE_TRACE_POINTS
#include "velk_trace.h"

static ushort mode = 0600;
module_param(mode, ushort, 0444);
MODULE_PARM_DESC(mode, "permissions of the node, 0600 by default");

static uint uid;
module_param(uid, uint, 0444);
MODULE_PARM_DESC(uid, "owner of the node");

static uint gid;
module_param(gid, uint, 0444);
MODULE_PARM_DESC(gid, "group of the node");

uint velk_max_tasks = 32768;
module_param_named(max_tasks, velk_max_tasks, uint, 0444);
MODULE_PARM_DESC(max_tasks, "tasks that a process may register");

uint velk_max_holds = 4096;
module_param_named(max_holds, velk_max_holds, uint, 0444);
MODULE_PARM_DESC(max_holds, "running tasks and critical spans that a process may have");

static struct proc_dir_entry *velk_directory;

static int velk_open(struct inode *inode, struct file *file)
{
	file->private_data = velk_process_open();
	return file->private_data ? 0 : -ENOMEM;
}

static int velk_release(struct inode *inode, struct file *file)
{
	velk_process_release(file->private_data);
	return 0;
}

/* @command is NULL when the request is of none. */
static int answer(struct velk_process *process, const struct VELKCommandRow *command,
		  void __user *argument, union velk_record *record)
{
	if (!command)
		return -ENOTTY;
	if (copy_from_user(record, argument, _IOC_SIZE(command->request)))
		return -EFAULT;
	return velk_session_command(process, command, record);
}

static void count(struct velk_process *process, const struct VELKCommandRow *command, int result)
{
	struct velk_counter *counter;

	if (!command) {
		atomic64_inc(&process->other_requests);
		return;
	}
	/* By its number: each source has a copy of the rows, so their addresses differ. */
	counter = &process->commands[_IOC_NR(command->request) - VELK_FIRST_COMMAND];
	atomic64_inc(result ? &counter->refused : &counter->accepted);
}

static void trace_command(unsigned int request, const struct VELKCommandRow *command,
			  const union velk_record *record, int result)
{
	u32 id = 0;
	s32 value = 0;

	switch (result == -EFAULT || result == -ENOTTY ? 0 : request) {
	case VELK_IOC_TASK_INIT:
		id = record->task_init.uniqueTaskId;
		value = record->task_init.defaultUclamp;
		break;
	case VELK_IOC_TASK_START:
	case VELK_IOC_TASK_END:
	case VELK_IOC_SCENE_CHANGE:
		id = record->task.uniqueTaskId;
		value = record->task.sceneChangeMode;
		break;
	case VELK_IOC_CAM_FPS:
		value = record->cam_fps.fps;
		break;
	case VELK_IOC_SINGLE_SHOT:
		value = record->single_shot.percentLevel;
		break;
	case VELK_IOC_CRITICAL_START:
	case VELK_IOC_CRITICAL_END:
		value = record->critical.criticalValue;
		break;
	case VELK_IOC_ANCHOR:
		id = record->anchor.anchor;
		value = record->anchor.phase;
		break;
	}
	trace_velk_command(request, command, id, value, result);
}

static long velk_ioctl(struct file *file, unsigned int request, unsigned long argument)
{
	struct velk_process *process = file->private_data;
	const struct VELKCommandRow *command = velk_find_command(request);
	union velk_record record;
	int result;

	/* A child that inherited the file has no part in its parent's state. */
	if (process->pid != task_tgid(current))
		return -EPERM;
	result = answer(process, command, (void __user *)argument, &record);
	count(process, command, result);
	if (trace_velk_command_enabled())
		trace_command(request, command, &record, result);
	return result;
}

#ifdef CONFIG_COMPAT
/* Records have the same layout for 32-bit callers. */
static long velk_compat_ioctl(struct file *file, unsigned int request, unsigned long argument)
{
	return velk_ioctl(file, request, (unsigned long)compat_ptr(argument));
}
#endif

static const struct proc_ops velk_node_ops = {
	.proc_open = velk_open,
	.proc_release = velk_release,
	.proc_ioctl = velk_ioctl,
#ifdef CONFIG_COMPAT
	.proc_compat_ioctl = velk_compat_ioctl,
#endif
	.proc_lseek = noop_llseek,
};

/* The state is for those that may use the node. */
static bool create_files(void)
{
	const kuid_t owner = make_kuid(&init_user_ns, uid);
	const kgid_t group = make_kgid(&init_user_ns, gid);
	struct proc_dir_entry *node;
	struct proc_dir_entry *state;

	velk_directory = proc_mkdir("velk", NULL);
	if (!velk_directory)
		return false;
	node = proc_create("velk_ioctl", mode, velk_directory, &velk_node_ops);
	state = proc_create_single("state", mode & 0444, velk_directory, velk_state_show);
	if (!node || !state) {
		proc_remove(velk_directory);
		return false;
	}
	proc_set_user(node, owner, group);
	proc_set_user(state, owner, group);
	return true;
}

static int __init velk_init(void)
{
	if (mode & ~0777 || !uid_valid(make_kuid(&init_user_ns, uid)) ||
	    !gid_valid(make_kgid(&init_user_ns, gid))) {
		pr_err("mode has to be within 0777, uid and gid have to exist\n");
		return -EINVAL;
	}
	if (!create_files())
		return -ENOMEM;
	if (!IS_ENABLED(CONFIG_UCLAMP_TASK))
		pr_info("no CONFIG_UCLAMP_TASK: commands are checked and accounted only\n");
	return 0;
}

/* Releases the files that are still open, and with them every boost. */
static void __exit velk_exit(void)
{
	proc_remove(velk_directory);
}

module_init(velk_init);
module_exit(velk_exit);

MODULE_DESCRIPTION("Reference driver for the scheduling records of a camera service");
MODULE_LICENSE("GPL");
