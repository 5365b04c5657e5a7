/*
 * What the driver has learnt from the commands so far: its tasks, the threads that run them, the
 * open critical spans, the merged control. Not thread-safe.
 */
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "driver/DriverSnapshot.h"

namespace desk {

class DriverSession {
  public:
    struct Finding {
        const char* text = "";
        bool isFault = false;  // to be refused, not only noted
    };

    // Both expect a record whose content is valid.
    Finding inspect(uint32_t request, const void* record) const;
    void accept(uint32_t request, const void* record);

    // Follows what the sender assumes after a refusal. The record may be invalid.
    void refuse(uint32_t request, const void* record, bool isInjected);

    const MergedControl& control() const { return mControl; }
    void fill(DriverSnapshot& snapshot) const;

  private:
    struct Run {
        uint32_t tid = 0;
        bool isRunning = false;    // false: its start was refused
        bool hasDiverged = false;  // refused by an injected fault: the sender counts it as done
    };
    struct Task {
        TaskSnapshot snapshot;
        bool isRefusalInjected = false;
        std::vector<Run> runs;
    };
    struct Span {
        CriticalSpan snapshot;
        bool isOpen = false;
        bool hasDiverged = false;
    };

    const Task* findTask(uint32_t uniqueTaskId) const;
    static const Run* findRun(const Task& task, uint32_t tid);

    Finding inspectStart(const VELK_TASK_PARAM& record) const;
    Finding inspectEnd(const VELK_TASK_PARAM& record) const;
    Finding inspectSceneChange(const VELK_TASK_PARAM& record) const;
    Finding inspectControl(const VELK_SINGLE_SHOT_PARAM& record) const;
    Finding inspectSpan(const VELK_CRITICAL_TASK_PARAM& record, bool isStart) const;

    void begin(bool isInitialised);
    void registerTask(const VELK_TASK_INIT_PARAM& record);
    void startTask(const VELK_TASK_PARAM& record);
    void takeControl(const VELK_SINGLE_SHOT_PARAM& record);
    void divergeRun(const VELK_TASK_PARAM& record, bool isStart);
    void divergeSpan(const VELK_CRITICAL_TASK_PARAM& record, bool isStart);

    bool mIsInitialised = false;
    bool mIsSenderUp = false;  // the sender's view, which a refused init or uninit does not change
    std::unordered_map<uint32_t, Task> mTasks;
    std::unordered_map<uint32_t, Span> mSpans;
    ControlLevels mClusterLevels = {};  // in force without a control
    MergedControl mControl;
    MergedControl mControlAtUninit;
    uint64_t mRefusedRegistrations = 0;
    uint64_t mReplayedRegistrations = 0;
};

}  // namespace desk
