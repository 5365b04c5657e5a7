#include "run/Recording.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <vector>

namespace desk {

namespace {

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

ssize_t readSome(const android::base::unique_fd& file, std::vector<char>& block) {
    ssize_t size = -1;
    do {
        size = read(file.get(), block.data(), block.size());
    } while (size < 0 && errno == EINTR);
    return size;
}

}  // namespace

void emptyRecording(const std::string& path) {
    const android::base::unique_fd file(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.ok() && errno == ENOENT) {
        // The program makes it, as the user that it is by then.
        const auto folder = std::filesystem::absolute(path).parent_path();
        if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
            fail(errno, path);
        }
        return;
    }
    struct stat status = {};
    if (!file.ok() || fstat(file.get(), &status) != 0) {
        fail(errno, path);
    }
    if (!S_ISREG(status.st_mode)) {
        fail(EINVAL, path + ": not a regular file");
    }
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        fail(errno, path + (errno == EWOULDBLOCK ? ": another process records into it" : ""));
    }
    if (ftruncate(file.get(), 0) != 0) {
        fail(errno, path);
    }
}

uint64_t endRecording(const std::string& path) {
    const android::base::unique_fd file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (!file.ok() && errno == ENOENT) {
        return 0;
    }
    std::vector<char> block(size_t{1} << 20);
    uint64_t lines = 0;
    off_t place = 0;
    off_t end = 0;  // of the text
    ssize_t size = -1;
    while (file.ok() && (size = readSome(file, block)) > 0) {
        const auto blockEnd = block.begin() + size;
        lines += static_cast<uint64_t>(std::count(block.begin(), blockEnd, '\n'));
        const auto last = std::find_if(std::make_reverse_iterator(blockEnd), block.rend(),
                                       [](char byte) { return byte != '\0'; });
        end = last != block.rend() ? place + (last.base() - block.begin()) : end;
        place += size;
    }
    const bool isCut = size == 0 && (end == place || flock(file.get(), LOCK_EX | LOCK_NB) != 0 ||
                                     ftruncate(file.get(), end) == 0);
    if (!isCut) {
        fail(errno, path);
    }
    return lines;
}

}  // namespace desk
