/*
 * The task registrations that the driver has refused so far, by unique task id. Asking for one
 * costs one load while none is owed, which is the usual case.
 */
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/CommandRecords.h"
#include "foundation/Visibility.h"
#include "resource/ErrorHandle.h"

// Any operation may be called from any thread.
class VELK_INTERNAL RefusedRegistrations {
  public:
    // The task must have no registration in the list.
    void add(unsigned uniqueTaskId, const VELK_TASK_INIT_PARAM& record) {
        mList.addToErrorList(uniqueTaskId, record);
        ++mOwed;
    }

    // Whether the task's registration was refused.
    bool contains(unsigned uniqueTaskId) { return mOwed != 0 && mList.isInErrorList(uniqueTaskId); }

    // Copies the task's registration. False, with `record` untouched, when it is not in the list.
    bool find(unsigned uniqueTaskId, VELK_TASK_INIT_PARAM& record) {
        return mList.getResidual(uniqueTaskId, record);
    }

    // The task must have a registration in the list.
    void remove(unsigned uniqueTaskId) {
        mList.removeFromErrorList(uniqueTaskId);
        --mOwed;
    }

  private:
    ErrorHandle<unsigned, VELK_TASK_INIT_PARAM> mList;
    std::atomic<uint32_t> mOwed = 0;
};
