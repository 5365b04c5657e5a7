/* SPDX-License-Identifier: GPL-2.0 */
/* The macros of trace events are laid out as the fields that they stand for. */
/* clang-format off */
#undef TRACE_SYSTEM
#define TRACE_SYSTEM velk

#if !defined(VELK_TRACE_H) || defined(TRACE_HEADER_MULTI_READ)
#define VELK_TRACE_H

#include <linux/tracepoint.h>

#include "velk.h"

/*
 * A command as it was answered. The id is that of the task or anchor, the rest is in the record.
 * @command is NULL when the request is of none.
 */
TRACE_EVENT(velk_command,
	TP_PROTO(unsigned int request, const struct VELKCommandRow *command, u32 id, s32 value,
		 int result),
	TP_ARGS(request, command, id, value, result),
	TP_STRUCT__entry(
		__array(char, command, 32)
		__field(u32, id)
		__field(s32, value)
		__field(int, result)
	),
	TP_fast_assign(
		if (command)
			strscpy(__entry->command, command->name, sizeof(__entry->command));
		else
			snprintf(__entry->command, sizeof(__entry->command), "0x%x", request);
		__entry->id = id;
		__entry->value = value;
		__entry->result = result;
	),
	TP_printk("command=%s id=%u value=%d result=%d", __entry->command, __entry->id,
		  __entry->value, __entry->result)
);

/* A thread's boost changed: what is wanted, and the util_min that it has now because of it. */
TRACE_EVENT(velk_boost,
	TP_PROTO(const struct task_struct *task, u32 wanted, const struct velk_clamp *clamp,
		 int result),
	TP_ARGS(task, wanted, clamp, result),
	TP_STRUCT__entry(
		__array(char, comm, TASK_COMM_LEN)
		__field(pid_t, pid)
		__field(u32, wanted)
		__field(u32, util_min)
		__field(u32, own)
		__field(int, result)
	),
	TP_fast_assign(
		memcpy(__entry->comm, task->comm, TASK_COMM_LEN);
		__entry->pid = task->pid;
		__entry->wanted = wanted;
		__entry->util_min = clamp->applied ? clamp->value : clamp->own;
		__entry->own = clamp->own;
		__entry->result = result;
	),
	TP_printk("comm=%s pid=%d wanted=%u util_min=%u own=%u result=%d", __entry->comm,
		  __entry->pid, __entry->wanted, __entry->util_min, __entry->own, __entry->result)
);

#endif

#undef TRACE_INCLUDE_PATH
#define TRACE_INCLUDE_PATH .
#undef TRACE_INCLUDE_FILE
#define TRACE_INCLUDE_FILE velk_trace
#include <trace/define_trace.h>
