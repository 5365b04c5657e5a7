/*
 * Makes one call of a session.
 */
#pragma once

#include "session/SessionCall.h"

namespace desk {

// Returns what the operation returned: 0, or -1 when it failed.
int runCall(const Operation& operation);

}  // namespace desk
