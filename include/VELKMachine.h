/** @class VELKMachine
 * VELKMachine: what camera threads tell the CPU scheduling driver.
 *
 *     #include <VELKMachine.h>
 *
 *     void capture(const VELKInitParams& params, const void* stream, int task, unsigned frame) {
 *         VELKMachine::init(params);  // as the service starts; -1: the log says why
 *         VELKSingleShotControl boost;
 *         boost.uclampLevels = {512, 640};  // at least these uclamps, until the reset
 *         VELKMachine::notifySingleShotControl(boost);
 *         VELKMachine::notifyTaskStart(stream, task);     // by the thread that does the work
 *         VELKMachine::notifyAnchorPointStart(1, frame);  // anchor 1: its targets are tuning data
 *         // ... the work on the frame ...
 *         VELKMachine::notifyAnchorPointEnd(1, frame);
 *         VELKMachine::notifyTaskEnd(stream, task);
 *         VELKMachine::notifyResetSingleShotControl();
 *         VELKMachine::uninit();  // as the service ends
 *     }
 *
 * Every operation is static, runs to completion on the calling thread and returns 0 on success and
 * -1 on failure; the log says why. Notifications reach the driver as ioctl() calls on
 * "/proc/velk/velk_ioctl", one per command, so every operation may block for as long as the driver
 * takes.
 *
 * Threads. Any operation may be called from any thread at any time, also while another thread calls
 * init or uninit: the call either finds the library down or completes on a live instance. While the
 * library is down, every operation but init, markCriticalTask and unsetCriticalTask returns -1.
 * uninit, and an init that fails, wait for the calls that are already inside before they destroy
 * the instance or close a descriptor, but not for calls that come later. Operations that take the
 * global mutex run one at a time, so they also wait for each other's driver calls. At process exit
 * the instance is destroyed unless a call is still inside.
 *
 * Not allowed: calling the library from inside a platform callback (a convertor, the settings
 * provider, ULogger, log, trace or property function that the library is calling), because the
 * library may hold locks meanwhile, or from a signal handler. A child process that is forked while
 * calls are inside must not call the library before exec: it has a copy of their locks but not the
 * threads that would release them. The library must not be unloaded while calls are inside.
 *
 * Exceptions. None is thrown by design. std::bad_alloc and what the platform classes throw reach
 * the caller after the trace section is closed and every lock is released. Unless an operation says
 * otherwise, a call that throws has changed nothing and can be made again.
 *
 * Runtime switches (system properties). "vendor.debug.velk.forceoff" switches init and
 * markCriticalTask off and is read on each of their calls. "vendor.debug.velk.debuglog" is read
 * once per process. It enables the messages of markCriticalTask, critical spans, anchor points and
 * VELKInfoNotifier themselves, those about the feature being off, and one before every command. All
 * other messages, also those about commands that fail, depend on their log level alone.
 * "vendor.debug.velk.dumptasktable.enable" makes every new unique task id rewrite the dump file
 * "/data/vendor/camera_dump/velk_task", under the global mutex. The two properties of anchor
 * targets are described with the anchor points. Every operation that does work opens a trace
 * section, named "VELK::" plus its name, under the camera trace tag.
 */
#ifndef VELK_MACHINE_H
#define VELK_MACHINE_H

#include "VELKTypes.h"

class VELKMachine {
  public:
    /**
     * Brings the library up, or counts one more user when it is up already.
     *
     * The first user's call takes over the descriptor that marking opened, or opens the control
     * node, loads the tuning data for params.scenario and params.customization, sends command 27
     * (init) and applies the default single-shot controls (command 35, their results are ignored),
     * which go onto the stack of handed-over controls. When marking found no node before, or got
     * descriptor 0, init does not try to open the node: the library comes up without a descriptor,
     * and every command fails.
     *
     * Returns 0 when the user was counted and, on a creating call, the driver took command 27.
     * Returns -1 with nothing changed when the feature is switched off; -1 with the library down
     * when the node exists but cannot be opened or the platform has no tuning data (a descriptor
     * taken over from marking is then closed); -1 with the library up and the user counted (uninit
     * is still needed) when only command 27 failed, for example because the device has no control
     * node.
     *
     * Feature switch: yes. Locks: global mutex, for the whole call. Exceptions: a creating call
     * that throws leaves the library down and the count unchanged.
     */
    VELK_API static int init(const VELKInitParams& params);

    /**
     * Removes one user. The last user's call sends command 32 (uninit), waits for the calls that
     * are inside without the global mutex, and destroys the instance with all tables, ids and its
     * descriptor. Every call also closes the descriptor that marking opened while the library was
     * down, after waiting for the calls that may be using it.
     *
     * Returns 0 when the call was counted and, on the last one, the driver took command 32. Returns
     * -1 when no user was left, or when command 32 failed (the library is down all the same).
     *
     * Feature switch: no. Locks: global mutex, for the whole call. Exceptions: a call that throws
     * has removed the user all the same, and the last user's call has destroyed the instance.
     */
    VELK_API static int uninit();

    /**
     * The calling thread starts one unit of camera work. `key` identifies the caller (only its
     * value is used) and `task` the kind of work; the pair gets a unique task id on its first start
     * and keeps it until the last uninit.
     *
     * The first start of a pair registers the task with command 28; a refused registration is kept,
     * tried once more at once and again on every later start, and does not fail the start. Every
     * start sends command 29 (thread id, unique task id) and records the thread as running the
     * task, also when the driver refuses the command.
     *
     * `task`: an enum whose tuning data has a target time and a default uclamp above 0; below 21
     * the platform's data is asked, from 22 the customer's, 21 is never valid. `extra`: its flags
     * go into the registration, so they count on the first start of a pair; default {-1, 0, 0}.
     *
     * Returns 0 when the driver took command 29; -1 when the library is down, the task is invalid
     * or the driver refused. Feature switch: no. Locks: global mutex, for the whole call.
     * Exceptions: a pair whose registration was neither sent nor kept is forgotten (its id is not
     * used again) and is registered by its next start. A call that throws after the driver took
     * command 29 has not recorded the thread; made again, it sends the command again.
     */
    VELK_API static int notifyTaskStart(const void* key, int task,
                                        const VELKTaskExtraParams& extra);
    VELK_API static int notifyTaskStart(const void* key, int task); /**< @overload */

    /**
     * The calling thread ends the unit of work of the pair: sends command 30 (thread id, unique
     * task id) and marks every thread that runs this id as no longer running it, also when the
     * driver refuses. The pair keeps its id.
     *
     * Returns 0 when the driver took the command; -1 when the library is down, the task is invalid
     * (see notifyTaskStart), the pair never started (the look-up then uses up an id), or the driver
     * refused. Feature switch: no. Locks: global mutex, for the whole call. Exceptions: a
     * call that throws after the driver took command 30 leaves the thread recorded as running the
     * task; made again, it sends the command again.
     */
    VELK_API static int notifyTaskEnd(const void* key, int task);

    /**
     * The task that the calling thread is running has entered another scene: sends command 31 with
     * the thread id, the unique task id of the first active start of `task` on this thread, and
     * `mode` unchanged.
     *
     * Returns 0 when the driver took the command; -1 when the library is down, this thread runs no
     * such task, or the driver refused. Feature switch: no. Locks: a table lock for the look-up;
     * none while the driver works.
     */
    VELK_API static int notifyTaskSceneChange(int task, VELKSceneChangeMode mode);

    /**
     * Activates the single-shot control that the settings hold for `category` in the current
     * scenario, else in the fallback scenario 8. For a category that the settings do not know at
     * all, it is the first control that a caller handed over with that category. The control is
     * activated as by the overload below, under the category asked for; one of category 0 goes onto
     * the stack.
     *
     * Returns 0 when the driver took command 35; -1 when the library is down, the category is not
     * found, its control is out of range, or the driver refused. Feature switch: no. Locks: global
     * mutex, for the whole call.
     */
    VELK_API static int notifySingleShotControl(int category);

    /**
     * Activates `control` and sends it as command 35. Each value that it asks for is replaced by
     * the merge over all active controls:
     *   - uclampLevels: per position the maximum, with the tuning data's level as the floor;
     *   - percentLevel other than -1: the maximum of those of 1 or more, -2 when there is none;
     *   - limits[0] other than 0: the maximum, 999999 when there is none;
     *   - criticalTaskUclamps: per task enum the maximum, with its default uclamp as the floor. Of
     *     several entries for one enum only the first is merged. Each uclamp is sent with the
     *     unique task ids that run the enum, and with those whose run has ended but whose place no
     *     later start of the enum has taken. When there is no such id, or more than 20 in all, the
     *     record is sent without ids and an error is logged;
     *   - sharedFlag: 1 when controls with the flag were activated more often than withdrawn.
     *
     * Values that the control does not ask for, and all other fields, are sent unchanged.
     * A control of category 0 goes onto the stack of handed-over controls. For any other category
     * that the settings do not know, the first control becomes the category's default until the
     * last uninit. The control stays active, also when the driver refuses it, until it is reset.
     *
     * Returns 0 when the driver took the command; -1 when the library is down, the control is out
     * of range (see VELKSingleShotControl; nothing is changed), or the driver refused. Feature
     * switch: no. Locks: table locks, one at a time, none while the driver works. Exceptions: the
     * control is not active.
     */
    VELK_API static int notifySingleShotControl(const VELKSingleShotControl& control);

    /**
     * Withdraws a control and sends command 35 with the reset flag. Each value that the control
     * asked for is replaced by the merge over the controls that stay active. sharedFlag is 1 when
     * no active control holds it any more, and a requestValue other than -1 is sent as -2
     * (release).
     *
     * Category 0 (and the overload without argument) takes the newest control off the stack of
     * handed-over controls; any other category withdraws the control that
     * notifySingleShotControl(category) would activate now. With a value, all equal values leave
     * the merge, also those of other controls. Resets need not match notifications: resetting a
     * category that is not active also removes its values, counts one sharedFlag less, and sends
     * the command.
     *
     * Returns 0 when the driver took the command; -1 when the library is down, the category is not
     * found, the stack is empty, the control is out of range, or the driver refused (the control is
     * withdrawn all the same). Feature switch: no. Locks: global mutex, for the whole call.
     * Exceptions: the control is active as before.
     */
    VELK_API static int notifyResetSingleShotControl();
    VELK_API static int notifyResetSingleShotControl(int category); /**< @overload */

    /**
     * The caller's work becomes critical. While the library is up this is
     * notifySingleShotControl(user) and returns its result. While it is down, the settings'
     * control of `user` for scenario 8 is sent as command 35, without being checked or merged and
     * without its critical tasks. Its descriptor stays open until the next init takes it over or
     * the next uninit closes it. Without such a control nothing is sent and the result is 0. The
     * overload without argument marks for user 4.
     *
     * Returns 0 on success; -1 when the feature is switched off, the node is absent or cannot be
     * opened, the driver refused, or notifySingleShotControl(user) fails. Feature switch: yes.
     * Locks: none while the library is down; else those of notifySingleShotControl(int). Two first
     * calls that race may both open the node: the later descriptor is kept, and the earlier one
     * stays open, unused, until the process exits.
     */
    VELK_API static int markCriticalTask();
    VELK_API static int markCriticalTask(int user); /**< @overload */

    /**
     * The caller's work is critical no longer: a control in its default state is sent as command
     * 35. What marking activated while the library was up stays active until
     * notifyResetSingleShotControl(user).
     *
     * While the library is up, the default control is activated by
     * notifySingleShotControl(control): every call leaves one more (240 bytes) on the stack of
     * handed-over controls until it is reset, or until the last uninit. A later
     * notifyResetSingleShotControl() without argument takes these off the stack first, before the
     * controls that callers handed over earlier.
     *
     * Returns 0 when the driver took the command; -1 when the node is absent or cannot be opened,
     * or the driver refused. Feature switch: no. Locks: global mutex, for the whole call.
     */
    VELK_API static int unsetCriticalTask();

    /**
     * The calling thread starts (command 36: thread id and critical value) or ends (command 37:
     * thread id) a critical piece of `task`. The critical value is the larger of the task's default
     * uclamp and what the active single-shot controls ask for it. Start and end must come from the
     * thread that does the work; the library does not pair them.
     *
     * `task`: an enum whose tuning data has a default uclamp above 0 (see notifyTaskStart). Returns
     * 0 when the driver took the command; -1 when the library is down, the task is unknown, or the
     * driver refused. Feature switch: no. Locks: the start takes a table lock for the value; none
     * while the driver works.
     */
    VELK_API static int notifySingleShotCriticalTaskStart(int task);
    VELK_API static int notifySingleShotCriticalTaskEnd(int task); /**< see above */

    /**
     * The pipeline passes an anchor point: command 38 with the anchor, the phase, `serial`
     * unchanged, and the anchor's targets of the current scenario (start: latency and jitter; end:
     * jitter alone). The customer's non-zero targets override the platform's. The properties
     * "vendor.debug.velk.latencySpec" and "vendor.debug.velk.jitterSpec", which are read on each
     * call, override both: the value anchor * 100000 + target (target below 100000) sets the
     * latency or jitter target of that anchor and makes that of every other anchor 0.
     *
     * A start of an anchor with neither target fails and makes the anchor invalid until the last
     * uninit: every later start and end of it fails at once. An end does not validate.
     *
     * Returns 0 when the driver took the command; -1 when the library is down, the anchor is
     * invalid, or the driver refused. Feature switch: no. Locks: the anchor lock while the targets
     * are looked up; none while the driver works.
     */
    VELK_API static int notifyAnchorPointStart(int anchor, unsigned int serial);
    VELK_API static int notifyAnchorPointEnd(int anchor, unsigned int serial); /**< see above */
};

#endif  // VELK_MACHINE_H
