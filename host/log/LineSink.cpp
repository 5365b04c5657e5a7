#include "log/LineSink.h"

#include <cerrno>
#include <system_error>

namespace desk {

std::shared_ptr<LineSink> LineSink::toFile(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "we");
    if (file == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return std::shared_ptr<LineSink>(new LineSink(file, true));
}

std::shared_ptr<LineSink> LineSink::toStandardError() {
    return std::shared_ptr<LineSink>(new LineSink(stderr, false));
}

LineSink::~LineSink() {
    if (mIsOwned) {
        std::fclose(mFile);
    } else {
        std::fflush(mFile);
    }
}

void LineSink::writeLine(std::string_view line) noexcept {
    const int callersErrno = errno;
    {
        const std::lock_guard lock(mMutex);
        const bool isWritten = std::fwrite(line.data(), 1, line.size(), mFile) == line.size() &&
                               std::fputc('\n', mFile) != EOF;
        mHasFailed = mHasFailed || !isWritten;
    }
    errno = callersErrno;
}

bool LineSink::flush() noexcept {
    const std::lock_guard lock(mMutex);
    mHasFailed = std::fflush(mFile) != 0 || mHasFailed;
    return !mHasFailed;
}

}  // namespace desk
