/*
 * Keeps a thread from being cancelled in a library that is preloaded.
 */
#pragma once

#include <pthread.h>

namespace desk {

// While one exists, pthread_cancel takes no effect on the calling thread, as in the calls of the
// library itself. A device has no pthread_cancel.
class NoCancellation {
  public:
#ifdef __BIONIC__
    NoCancellation() {}
    ~NoCancellation() {}
#else
    NoCancellation() {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mFormer);
    }
    ~NoCancellation() {
        pthread_setcancelstate(mFormer, nullptr);
    }
#endif
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

#ifndef __BIONIC__
  private:
    int mFormer = PTHREAD_CANCEL_ENABLE;
#endif
};

}  // namespace desk
