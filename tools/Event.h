/*
 * Something that poll can wait for.
 */
#pragma once

#include <android-base/unique_fd.h>

namespace desk {

// Once set it stays set.
class Event {
  public:
    // Throws std::system_error.
    Event();

    void set() const;
    int get() const { return mDescriptor.get(); }

  private:
    android::base::unique_fd mDescriptor;
};

}  // namespace desk
