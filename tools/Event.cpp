#include "Event.h"

#include <cerrno>
#include <system_error>

namespace desk {

Event::Event() {
    if (!android::base::Pipe(&mReading, &mWriting)) {
        throw std::system_error(errno, std::generic_category(), "no event to wait for");
    }
}

void Event::set() {
    const std::lock_guard lock(mMutex);
    mWriting.reset();
}

}  // namespace desk
