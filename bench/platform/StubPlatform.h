/*
 * The platform of the measurements: every answer is fixed and costs next to nothing, logging and
 * tracing are off. It lies in a shared library of its own, so that a profile can tell its
 * instructions from those of the library that is measured.
 */
#pragma once

#include <cstddef>

namespace bench {

// The range that has tuning data; every task in it is valid.
inline constexpr int kFirstTask = 1;
inline constexpr int kTasks = 20;
inline constexpr int kAnchor = 1;
// A category that the settings know as soon as they have an entry.
inline constexpr int kFirstCategory = 1;

// Gives the settings this many single-shot controls, one a category, for every scenario.
void setSettingsEntries(size_t entries);

}  // namespace bench
