/*
 * Marks what is the library's own, so that no build exports it whatever its flags, and the
 * library's calls to it are direct.
 */
#pragma once

#define VELK_INTERNAL __attribute__((visibility("hidden")))
