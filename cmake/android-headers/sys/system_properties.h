/*
 * The one line that cutils/properties.h needs of the device's C library. It lets the library
 * compile against the distribution's copies of the platform's headers, without an NDK and without
 * the desk.
 */
#pragma once

#define PROP_VALUE_MAX 92
