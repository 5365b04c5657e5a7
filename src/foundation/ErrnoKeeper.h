/*
 * Restores errno at the end of a scope, so that a message about a failed call does not change the
 * errno that the call has left.
 */
#pragma once

#include <cerrno>

#include "foundation/Visibility.h"

class VELK_INTERNAL ErrnoKeeper {
  public:
    ErrnoKeeper() : mErrno(errno) {}
    ~ErrnoKeeper() { restore(); }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

    void restore() const { errno = mErrno; }

  private:
    const int mErrno;
};
