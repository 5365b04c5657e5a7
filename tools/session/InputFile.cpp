#include "session/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace desk {

namespace {

[[noreturn]] void fail(int error, const std::string& name) {
    throw std::system_error(error, std::generic_category(), name);
}

int openForReading(const std::string& path) {
    if (path == "-") {
        // A descriptor that is opened later would take the place of one that is closed.
        if (::fcntl(STDIN_FILENO, F_GETFD) < 0) {
            fail(errno, "standard input");
        }
        return -1;
    }
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        fail(errno, path);
    }
    return descriptor;
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : mName(path == "-" ? "standard input" : path),
      mOwned(openForReading(path)),
      mInput(mOwned.get() >= 0 ? mOwned.get() : STDIN_FILENO) {
    struct stat status = {};
    if (::fstat(mInput, &status) != 0) {
        fail(errno, mName);
    }
    if (S_ISDIR(status.st_mode)) {
        fail(EISDIR, mName);
    }
    if (S_ISREG(status.st_mode)) {
        mSize = static_cast<uint64_t>(status.st_size);
        mHasContent = mOwned.get() >= 0 && status.st_size > 0;
    }
}

size_t InputFile::read(char* buffer, size_t size) {
    while (true) {
        std::array<pollfd, 2> waiting = {{{mInput, POLLIN, 0}, {mStop.get(), POLLIN, 0}}};
        if (::poll(waiting.data(), waiting.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail(errno, mName);
        }
        if (waiting[1].revents != 0) {
            return 0;
        }
        const ssize_t count = ::read(mInput, buffer, size);
        if (count >= 0) {
            mHasContent = mHasContent || count > 0;
            return static_cast<size_t>(count);
        }
        if (errno != EINTR) {
            fail(errno, mName);
        }
    }
}

void InputFile::stop() {
    mStop.set();
}

}  // namespace desk
