/** @file
 * Entry points for customer modules, for C and for look-up by name.
 *
 * Each function passes its arguments unchanged to the operation of VELKMachine that it is named
 * after, and returns that operation's result: 0 on success, -1 on failure. VELKMachine.h says what
 * the operation sends, which locks it takes, when it may block and what other threads may do
 * meanwhile; all of that holds here too. Pointers to records must not be null. `key` may be any
 * value and is never dereferenced.
 *
 * The camera service brings the library up and down. Before that and after the last uninit every
 * function returns -1, except markCriticalTaskCus, markCriticalTaskUserCus and
 * unsetCriticalTaskCus, which can reach the driver on their own.
 *
 * C code cannot build a single-shot control; it passes on one that it got from C++. An exception
 * (when memory runs out) cannot be caught in C; it ends the process unless a C++ caller catches it.
 */
#ifndef VELK_MACHINE_CUS_H
#define VELK_MACHINE_CUS_H

#include "VELKTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The calling thread starts a task of kind `task`: commands 28 (until the driver takes it) and 29.
 */
VELK_API int notifyTaskStartExtraCus(const void* key, int task, const VELKTaskExtraParams* extra);

/** The calling thread ends a task that it started: command 30. */
VELK_API int notifyTaskEndCus(const void* key, int task);

/** The task of kind `task` on the calling thread has entered another scene: command 31. */
VELK_API int notifyTaskSceneChangeCus(int task, VELKSceneChangeMode mode);

/** Activates the single-shot control of a category: command 35. */
VELK_API int notifySingleShotControlUserCus(int category);

/** Activates a handed-over single-shot control: command 35. The library copies what it keeps. */
VELK_API int notifySingleShotControlCus(const VELKSingleShotControl* control);

/** Withdraws the single-shot control of a category (0: the newest handed-over one): command 35. */
VELK_API int notifyResetSingleShotControlUserCus(int category);

/** Withdraws the newest handed-over single-shot control: command 35. */
VELK_API int notifyResetSingleShotControlCus(void);

/** The work of the default user, 4, becomes critical: command 35. */
VELK_API int markCriticalTaskCus(void);

/** The work of `user` becomes critical: command 35. */
VELK_API int markCriticalTaskUserCus(int user);

/** The caller's work is critical no longer: command 35. */
VELK_API int unsetCriticalTaskCus(void);

/** The calling thread starts a critical piece of a task: command 36. */
VELK_API int notifySingleShotCriticalTaskStartCus(int task);

/** The calling thread ends a critical piece of a task: command 37. */
VELK_API int notifySingleShotCriticalTaskEndCus(int task);

/** The pipeline passes an anchor point, at its start and at its end: command 38. */
VELK_API int notifyAnchorPointStartCus(int anchor, unsigned int serial);
VELK_API int notifyAnchorPointEndCus(int anchor, unsigned int serial); /**< see above */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VELK_MACHINE_CUS_H */
