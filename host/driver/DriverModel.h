/*
 * A strict driver behind the control node. It checks every command, keeps the state that follows
 * from the accepted ones, and injects faults.
 *
 * A command is refused when its record or its caller is wrong (EINVAL; EFAULT without a record,
 * ENOTTY for an unknown request), or when it starts or ends a task whose registration never
 * arrived. A command that is only unusual after those before it is accepted and noted, because a
 * correct library may send it: two threads end one task, a notification arrives after an uninit.
 * The consequences of an injected refusal are neither refused nor noted.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "driver/DriverEvent.h"
#include "driver/DriverSnapshot.h"
#include "driver/InjectedFaults.h"

namespace desk {

// Thread-safe. The calls of the node return 0 or a negated errno, as a driver does.
class DriverModel {
  public:
    DriverModel();
    ~DriverModel();
    DriverModel(const DriverModel&) = delete;
    DriverModel& operator=(const DriverModel&) = delete;

    // `descriptor` refers to the node from now on.
    int open(int descriptor, uint32_t tid);
    // `copy` refers to the same open file from now on. As in a kernel, this is neither observed nor
    // counted.
    int duplicate(int descriptor, int copy);
    // `record` points to as many bytes as the request says.
    int command(int descriptor, uint32_t request, const void* record, uint32_t tid);
    // Only the close of the last descriptor of an open file counts and is observed.
    int close(int descriptor, uint32_t tid);

    void injectFaults(const InjectedFaults& faults);
    // Null removes it. Another thread may still be within a notification of the former one.
    void setObserver(std::shared_ptr<DriverObserver> observer);

    DriverSnapshot snapshot() const;
    // Forgets everything but the observer and the descriptors that are open.
    void reset();

    // To be called around a fork. The child begins with the descriptors that are open, and with no
    // observer.
    void prepareFork();
    void finishForkInParent();
    void finishForkInChild();

  private:
    struct State;
    std::unique_ptr<State> mState;
};

// The driver of this process, the one that answers at the control node. Lives until process exit.
// The child of a fork has one of its own.
DriverModel& controlNode();

}  // namespace desk
