#include "log/LineSink.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace desk {

namespace {

constexpr size_t kBufferSize = 1 << 16;

// Waits until a descriptor that does not block takes more.
bool waitForRoom(int descriptor) noexcept {
    pollfd waiting = {descriptor, POLLOUT, 0};
    return ::poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

std::shared_ptr<LineSink> LineSink::toFile(const std::string& path) {
    constexpr mode_t kReadableByAll = 0666;  // less what the umask takes away
    const int descriptor =
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kReadableByAll);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return std::shared_ptr<LineSink>(new LineSink(descriptor, path, Keeping::Lines));
}

std::shared_ptr<LineSink> LineSink::toStandardOutput() {
    return std::shared_ptr<LineSink>(
            new LineSink(STDOUT_FILENO, "standard output", Keeping::Lines));
}

std::shared_ptr<LineSink> LineSink::toStandardError() {
    return std::shared_ptr<LineSink>(
            new LineSink(STDERR_FILENO, "standard error", Keeping::Nothing));
}

std::shared_ptr<LineSink> LineSink::toReceiver(std::function<void(std::string_view)> take) {
    std::shared_ptr<LineSink> sink(new LineSink(-1, "receiver", Keeping::Nothing));
    sink->mTake = std::move(take);
    return sink;
}

LineSink::LineSink(int descriptor, std::string name, Keeping keeping)
    : mDescriptor(descriptor),
      mIsStandardStream(descriptor <= STDERR_FILENO),
      mName(std::move(name)),
      mKeeping(keeping) {
    mBuffer.reserve(kBufferSize);
}

LineSink::~LineSink() {
    if (!mIsStandardStream) {
        close();
    } else {
        flush();
    }
}

void LineSink::writeLine(std::string_view line) noexcept {
    const int callersErrno = errno;
    {
        const std::lock_guard lock(mMutex);
        append(line);
        append("\n");
        if (mKeeping == Keeping::Nothing) {
            flushBuffer();
        }
    }
    errno = callersErrno;
}

void LineSink::write(std::string_view text) noexcept {
    const std::lock_guard lock(mMutex);
    append(text);
}

bool LineSink::flush() noexcept {
    const std::lock_guard lock(mMutex);
    flushBuffer();
    return mError == 0;
}

bool LineSink::close() noexcept {
    const std::lock_guard lock(mMutex);
    flushBuffer();
    if (mDescriptor >= 0 && mDescriptor != STDERR_FILENO &&
        ::close(std::exchange(mDescriptor, -1)) != 0 && mError == 0) {
        mError = errno;
    }
    return mError == 0;
}

int LineSink::error() const noexcept {
    const std::lock_guard lock(mMutex);
    return mError;
}

bool LineSink::isAbandoned() const noexcept {
    const std::lock_guard lock(mMutex);
    return mError == EPIPE && mIsStandardStream;
}

void LineSink::append(std::string_view text) noexcept {
    if (text.size() > kBufferSize - mBuffer.size()) {
        flushBuffer();
    }
    if (text.size() > kBufferSize) {
        writeOut(text);
    } else {
        mBuffer.append(text);
    }
}

void LineSink::flushBuffer() noexcept {
    writeOut(mBuffer);
    mBuffer.clear();
}

void LineSink::writeOut(std::string_view text) noexcept {
    if (mTake) {
        mTake(text);
        return;
    }
    while (!text.empty() && mError == 0) {
        const ssize_t count = ::write(mDescriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (errno == EAGAIN ? !waitForRoom(mDescriptor) : errno != EINTR) {
            mError = errno;
        }
    }
}

}  // namespace desk
