/*
 * A strict driver behind the control node. It checks every command, keeps a snapshot of what it was
 * told, and misbehaves on request.
 *
 * What can be judged from the record and its caller alone is refused (EINVAL; EFAULT without a
 * record, ENOTTY for a request of no known command), and so are starts and ends of a task whose
 * registration never arrived. What is only odd in the light of the history is accepted and noted,
 * because a correct library may meet it: two threads end one task, a notification overtakes an
 * uninit. What follows from a refusal that the model was told to make is neither.
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

    // The caller brings the descriptor that stands for the node from here on.
    int open(int descriptor, uint32_t tid);
    // `copy` stands for the same open file from here on. A driver does not hear of it.
    int duplicate(int descriptor, int copy);
    // `record` points to as many bytes as the request says.
    int command(int descriptor, uint32_t request, const void* record, uint32_t tid);
    // A driver hears of the close of the last descriptor of an open file alone.
    int close(int descriptor, uint32_t tid);

    void injectFaults(const InjectedFaults& faults);
    // Null removes it. A notification that is under way on another thread may still be finishing.
    void setObserver(std::shared_ptr<DriverObserver> observer);

    DriverSnapshot snapshot() const;
    // Forgets everything but the observer and the descriptors that are open.
    void reset();

    // Around a fork. The child begins with the descriptors that are open, and with no observer.
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
