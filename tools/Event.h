/*
 * Something that poll can wait for.
 */
#pragma once

#include <android-base/unique_fd.h>

#include <mutex>

namespace desk {

// Once set it stays set. Any thread.
class Event {
  public:
    // Throws std::system_error.
    Event();

    void set();
    int get() const { return mReading.get(); }

  private:
    // Ends of a pipe. Closing one end is seen at the other, and unlike a write it cannot fail.
    android::base::unique_fd mReading;
    std::mutex mMutex;
    android::base::unique_fd mWriting;
};

}  // namespace desk
