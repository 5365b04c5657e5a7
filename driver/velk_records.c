// SPDX-License-Identifier: GPL-2.0
/* What is refused in a record, judged from its bytes and its caller alone. */
#include <linux/string.h>

#include "velk.h"

/* NULL when the request is of no command. */
const struct VELKCommandRow *velk_find_command(unsigned int request)
{
	const unsigned int index = _IOC_NR(request) - VELK_FIRST_COMMAND;

	if (index >= VELK_COMMAND_COUNT || VELK_COMMAND_ROWS[index].request != request)
		return NULL;
	return &VELK_COMMAND_ROWS[index];
}

static s64 value_of(const struct VELKField *field, const u8 *bytes, size_t element)
{
	switch (field->type) {
	case VELK_UNSIGNED32:
		return ((const u32 *)bytes)[element];
	case VELK_SIGNED32:
		return ((const s32 *)bytes)[element];
	default:
		return bytes[element];
	}
}

/* Terminated, and zero up to its end. */
static bool is_text_valid(const char *text, size_t size)
{
	const size_t length = strnlen(text, size);

	return length < size && !memchr_inv(text + length, 0, size - length);
}

static bool is_field_valid(const struct VELKField *field, const u8 *record, u32 tid)
{
	const u8 *bytes = record + field->offset;
	size_t i;

	if (field->type == VELK_TEXT)
		return is_text_valid(bytes, field->count);
	for (i = 0; i < field->count; i++) {
		const s64 value = value_of(field, bytes, i);

		if (value < field->smallest || value > field->largest)
			return false;
	}
	return strcmp(field->name, "tid") || value_of(field, bytes, 0) == tid;
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
	return true;
}

/* An end has no latency target. */
static bool is_anchor_valid(const struct VELK_ANCHOR_PARAM *record)
{
	return record->phase == VELK_ANCHOR_START || !record->latencyTarget;
}

/* Whether the fields fit together, each of which is valid. */
static bool fits_together(unsigned int request, const union velk_record *record)
{
	switch (request) {
	case VELK_IOC_SINGLE_SHOT:
		return are_critical_tasks_valid(&record->single_shot);
	case VELK_IOC_ANCHOR:
		return is_anchor_valid(&record->anchor);
	default:
		return true;
	}
}

/* 0 or -EINVAL. @tid is the calling thread. */
int velk_check_record(const struct VELKCommandRow *command, const union velk_record *record,
		      u32 tid)
{
	size_t i;

	for (i = 0; i < command->fieldCount; i++) {
		if (!is_field_valid(&command->fields[i], record->bytes, tid))
			return -EINVAL;
	}
	return fits_together(command->request, record) ? 0 : -EINVAL;
}
