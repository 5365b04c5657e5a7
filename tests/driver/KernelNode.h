/*
 * Access to the kernel's control node from threads of this process, and to the driver's state file.
 */
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "foundation/CommandRecords.h"
#include "nodecheck/Node.h"

namespace kernel {

using nodecheck::NodeFile;

// A thread that runs given work and sends records with its own id. The commands return 0 or an
// errno.
class Actor {
  public:
    explicit Actor(const NodeFile& file);
    ~Actor();
    Actor(const Actor&) = delete;
    Actor& operator=(const Actor&) = delete;

    uint32_t tid() const { return mTid; }
    // Runs it on the actor's thread, and waits for it.
    void run(std::function<void()> work);
    int send(uint32_t request, const void* record);

    int start(uint32_t task) { return sendTask(VELK_IOC_TASK_START, task); }
    int end(uint32_t task) { return sendTask(VELK_IOC_TASK_END, task); }
    int spanStart(int32_t value) { return sendSpan(VELK_IOC_CRITICAL_START, value); }
    int spanEnd() { return sendSpan(VELK_IOC_CRITICAL_END, 0); }
    int control(uint32_t task, uint32_t uclamp);
    int init();
    int uninit();
    int registerTask(uint32_t task, int32_t uclamp);

  private:
    int sendTask(uint32_t request, uint32_t task);
    int sendSpan(uint32_t request, int32_t value);

    const NodeFile& mFile;
    uint32_t mTid = 0;
    std::mutex mMutex;
    std::condition_variable mChange;
    std::function<void()> mWork;
    bool mIsDone = false;
    std::thread mThread;
};

// The lines about a process, by default this one, without times. Empty when it is not listed.
std::vector<std::string> stateLines(int pid = 0);
bool stateHas(const std::string& line);
bool kernelHasClamps();

}  // namespace kernel
