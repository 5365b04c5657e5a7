/*
 * What a thread waits for until it is its turn.
 */
#pragma once

#include <semaphore.h>

namespace desk {

// A POSIX semaphore, because it sleeps at once. The standard library's yields a few times first,
// and among threads that share a CPU each of these runs a thread whose turn it is not.
class Turn {
  public:
    Turn() { sem_init(&mSemaphore, 0, 0); }
    ~Turn() { sem_destroy(&mSemaphore); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    void give() { sem_post(&mSemaphore); }

    void await() {
        while (sem_wait(&mSemaphore) != 0) {
            // A signal handler ran.
        }
    }

  private:
    sem_t mSemaphore;
};

}  // namespace desk
