/** @class VELKInfoNotifier
 * VELKInfoNotifier: frame information for the CPU scheduling driver.
 *
 * Both operations may be called from any thread, take no lock, and return 0 when the driver took
 * the command and -1 when the library is down (see VELKMachine::init) or the driver refused. They
 * block for as long as the driver takes. Neither depends on the feature switch. Their own messages
 * need the debug log; messages about a command that fails do not. What VELKMachine.h says about
 * callbacks, exceptions, fork and unloading holds here too.
 */
#ifndef VELK_INFO_NOTIFIER_H
#define VELK_INFO_NOTIFIER_H

#include "VELKTypes.h"

class VELKInfoNotifier {
  public:
    /// A display vertical sync happened: command 33. The driver stamps it with its own clock.
    VELK_API static int notifyVSync();

    /// The camera runs at `fps` frames per second: command 34 with the rate truncated toward zero.
    /// Negative values and NaN are sent as 0, values above the 32-bit range as 4294967295.
    VELK_API static int notifyCamFps(float fps);
};

#endif  // VELK_INFO_NOTIFIER_H
