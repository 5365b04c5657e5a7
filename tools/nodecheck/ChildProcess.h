/*
 * A process that a check starts and ends.
 */
#pragma once

#include <sys/types.h>

#include <functional>

namespace nodecheck {

// To be made while this process has one thread.
class ChildProcess {
  public:
    using Ready = std::function<void()>;

    // Starts the work, and returns when it has called its argument or ended. Throws
    // std::system_error.
    explicit ChildProcess(const std::function<void(const Ready&)>& work);
    // Kills it if it still runs. It does not outlive this process, however that ends.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const { return mId; }
    // Kills it in the middle of what it does, and waits for its end.
    void kill();

  private:
    pid_t mId;
    bool mIsEnded = false;
};

}  // namespace nodecheck
