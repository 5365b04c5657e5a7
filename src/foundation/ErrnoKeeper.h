/*
 * Keeps errno for the length of a scope. Reporting a failed call must not change what there is to
 * report.
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
