/*
 * A semaphore that a thread waits on until the session comes to one of its calls.
 */
#pragma once

#include <semaphore.h>

namespace desk {

// A POSIX semaphore, because it sleeps at once. The standard library's yields a few times first,
// and among threads that share a CPU each of these runs a thread that has nothing to do.
class Semaphore {
  public:
    Semaphore() { sem_init(&mSemaphore, 0, 0); }
    ~Semaphore() { sem_destroy(&mSemaphore); }
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    void post() { sem_post(&mSemaphore); }

    void wait() {
        while (sem_wait(&mSemaphore) != 0) {
            // A signal handler ran.
        }
    }

  private:
    sem_t mSemaphore;
};

}  // namespace desk
