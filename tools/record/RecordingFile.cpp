#include "record/RecordingFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "record/NoCancellation.h"

namespace desk {

namespace {

constexpr size_t kStep = size_t{1} << 20;
constexpr size_t kSmallestStep = size_t{1} << 16;  // a multiple of every page size

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

// Returns 0 or an errno. Checks the limit first: exceeding it would end the program by a signal.
int reserve(int descriptor, uint64_t size) {
    rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
        size > limit.rlim_cur) {
        return EFBIG;
    }
    return posix_fallocate(descriptor, 0, static_cast<off_t>(size));
}

// A standard stream of the program that leads to the same file; null when none does.
const char* streamTo(const struct stat& file, int descriptor) {
    constexpr const char* kStreams[] = {"standard input", "standard output", "standard error"};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        struct stat status = {};
        if (stream != descriptor && fstat(stream, &status) == 0 && status.st_dev == file.st_dev &&
            status.st_ino == file.st_ino) {
            return kStreams[stream];
        }
    }
    return nullptr;
}

}  // namespace

RecordingFile::RecordingFile(std::string path) : mPath(std::move(path)) {
    const NoCancellation held;
    mDescriptor = open(mPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (mDescriptor < 0) {
        fail(errno, mPath);
    }
    struct stat status = {};
    int error = 0;
    if (fstat(mDescriptor, &status) == 0 && !S_ISREG(status.st_mode)) {
        error = EINVAL;
    } else if (const char* const stream = streamTo(status, mDescriptor)) {
        close(mDescriptor);
        throw std::runtime_error(mPath + ": is the program's " + stream +
                                 ", expected another file");
    } else if (status.st_mode == 0 || flock(mDescriptor, LOCK_EX | LOCK_NB) != 0 ||
               ftruncate(mDescriptor, 0) != 0) {
        error = errno;
    }
    if (error != 0) {
        close(mDescriptor);
        fail(error, mPath + (error == EWOULDBLOCK ? ": another process records into it"
                             : error == EINVAL    ? ": not a regular file"
                                                  : ""));
    }
    mDevice = status.st_dev;
    mInode = status.st_ino;
}

void RecordingFile::append(std::string_view text) {
    if (text.size() > mWindowSize - mWindowUsed) {
        mapNext(text.size());
    }
    std::memcpy(mWindow + mWindowUsed, text.data(), text.size());
    mWindowUsed += text.size();
}

void RecordingFile::mapNext(size_t size) {
    const NoCancellation held;
    const uint64_t end = mWindowOffset + mWindowUsed;
    const uint64_t offset = end / kSmallestStep * kSmallestStep;
    const auto used = static_cast<size_t>(end - offset);
    const int file = descriptor();
    // On a disk that is nearly full a smaller step may still fit.
    const size_t smallest = (used + size + kSmallestStep - 1) / kSmallestStep * kSmallestStep;
    size_t step = std::max(kStep, smallest);
    int error = reserve(file, offset + step);
    while (error != 0 && step > smallest) {
        step = std::max(step / 2, smallest);
        error = reserve(file, offset + step);
    }
    if (error != 0) {
        fail(error, mPath);
    }
    void* const window = mmap(nullptr, step, PROT_READ | PROT_WRITE, MAP_SHARED, file,
                              static_cast<off_t>(offset));
    if (window == MAP_FAILED) {
        fail(errno, mPath);
    }
    unmap();
    mWindow = static_cast<char*>(window);
    mWindowOffset = offset;
    mWindowSize = step;
    mWindowUsed = used;
}

void RecordingFile::unmap() {
    if (mWindow != nullptr) {
        munmap(mWindow, mWindowSize);
        mWindow = nullptr;
    }
}

void RecordingFile::trim() {
    const NoCancellation held;
    const uint64_t end = mWindowOffset + mWindowUsed;
    unmap();
    mWindowOffset = end;
    mWindowSize = 0;
    mWindowUsed = 0;
    if (ftruncate(descriptor(), static_cast<off_t>(end)) != 0) {
        fail(errno, mPath);
    }
}

int RecordingFile::descriptor() {
    const auto isFile = [this](int descriptor) {
        struct stat status = {};
        return fstat(descriptor, &status) == 0 && status.st_dev == mDevice &&
               status.st_ino == mInode;
    };
    if (isFile(mDescriptor)) {
        return mDescriptor;
    }
    const int again = open(mPath.c_str(), O_RDWR | O_CLOEXEC);
    if (again < 0) {
        fail(errno, mPath);
    }
    if (!isFile(again)) {
        close(again);
        fail(ESTALE, mPath + ": replaced while the recording was under way");
    }
    mDescriptor = again;
    return again;
}

}  // namespace desk
