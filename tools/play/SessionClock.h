/*
 * The time of the session that is played: the recorded time of each call, and within a call the
 * time that it really takes. A call that takes longer than it did in the recording may so end after
 * the next one begins.
 */
#pragma once

#include <cstdint>

namespace desk {

// There is one for the process, because the desk's clock is one. Calls are played one at a time.
class SessionClock {
  public:
    // Makes it the desk's clock until it is destroyed.
    SessionClock();
    ~SessionClock();
    SessionClock(const SessionClock&) = delete;
    SessionClock& operator=(const SessionClock&) = delete;

    // Both return the session's time in nanoseconds.
    static int64_t beginCall(int64_t atUs);
    static int64_t endCall();
};

}  // namespace desk
