/*
 * Undoes a step when the scope is left before the whole operation has succeeded.
 */
#pragma once

#include <utility>

#include "foundation/Visibility.h"

// The action runs in a destructor, so it must not throw.
template <typename Action>
class VELK_INTERNAL Rollback {
  public:
    explicit Rollback(Action action) : mAction(std::move(action)) {}
    ~Rollback() {
        if (mArmed) {
            mAction();
        }
    }
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;

    void dismiss() { mArmed = false; }

  private:
    Action mAction;
    bool mArmed = true;
};
