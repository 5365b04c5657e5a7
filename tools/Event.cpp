#include "Event.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace desk {

Event::Event() : mDescriptor(::eventfd(0, EFD_CLOEXEC)) {
    if (mDescriptor.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "no event to wait for");
    }
}

void Event::set() const {
    const uint64_t one = 1;
    // Only a counter at its maximum could refuse it, and then the event is set anyway.
    [[maybe_unused]] const ssize_t written = ::write(mDescriptor.get(), &one, sizeof one);
}

}  // namespace desk
