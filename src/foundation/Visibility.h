/*
 * Marks classes and functions that are internal: no build exports them, whatever its flags, and the
 * library calls them directly instead of through its symbol table.
 */
#pragma once

#define VELK_INTERNAL __attribute__((visibility("hidden")))
