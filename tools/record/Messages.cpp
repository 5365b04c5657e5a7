#include "record/Messages.h"

#ifdef __ANDROID__
#include <android/log.h>
#endif

#include <cerrno>
#include <cstdio>

#include "record/NoCancellation.h"

namespace desk {

void say(const std::string& message) noexcept {
    const int callersErrno = errno;
    const NoCancellation held;
#ifdef __ANDROID__
    __android_log_write(ANDROID_LOG_WARN, "velkrecord", message.c_str());
#endif
    dprintf(2, "velkrecord: %s\n", message.c_str());
    errno = callersErrno;
}

}  // namespace desk
