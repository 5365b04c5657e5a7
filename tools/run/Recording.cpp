#include "run/Recording.h"

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace desk {

namespace {

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
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
        fail(errno, path + ": another process records into it");
    }
    if (ftruncate(file.get(), 0) != 0) {
        fail(errno, path);
    }
}

uint64_t recordedCalls(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> block(size_t{1} << 20);
    uint64_t lines = 0;
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) ||
           file.gcount() > 0) {
        lines += static_cast<uint64_t>(
                std::count(block.begin(), block.begin() + file.gcount(), '\n'));
    }
    return lines;
}

}  // namespace desk
