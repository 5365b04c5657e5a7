/*
 * Turns Ctrl-C into a call.
 */
#pragma once

#include <csignal>
#include <functional>
#include <thread>

#include "Descriptor.h"

namespace desk {

/*
 * Watches for SIGINT and SIGTERM from its making to its end. The first one calls `onInterrupt` on a
 * thread of its own; the second ends the process at once. To be made before any other thread,
 * because the threads made later inherit that these signals do not reach them.
 */
class InterruptWatcher {
  public:
    // Throws std::system_error.
    explicit InterruptWatcher(std::function<void()> onInterrupt);
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

  private:
    void watch();

    std::function<void()> mOnInterrupt;
    sigset_t mFormerMask;
    Descriptor mSignals;
    Event mEnd;
    std::thread mThread;
};

}  // namespace desk
