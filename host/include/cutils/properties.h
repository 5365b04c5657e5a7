/*
 * System properties of the desk, declared as on a device. The desk brings this header because the
 * distribution's own needs a header of the device's C library.
 */
#pragma once

#include <stdint.h>

#define PROPERTY_VALUE_MAX 92 /* with the terminating zero */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copies the value, or the default when the property is unset or empty and the default is not null.
 * Returns the length; at most PROPERTY_VALUE_MAX - 1 characters and a zero are written.
 */
int property_get(const char* key, char* value, const char* default_value);

/*
 * "1", "y", "yes", "on", "true" are 1, "0", "n", "no", "off", "false" are 0; anything else, a null
 * key and a property that is unset give the default.
 */
int8_t property_get_bool(const char* key, int8_t default_value);

/*
 * The number that the value begins with, as strtoimax reads it with the base inferred. No number, a
 * number outside 32 bits, a null key and a property that is unset give the default.
 */
int32_t property_get_int32(const char* key, int32_t default_value);

/* Returns 0, or -1 when the key is null or empty or the value does not fit. Null means empty. */
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
