/*
 * Where lines of text go: a file or standard error. A line is written whole, also from many
 * threads.
 */
#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace desk {

class LineSink {
  public:
    // Throws std::system_error when the file cannot be opened.
    static std::shared_ptr<LineSink> toFile(const std::string& path);
    static std::shared_ptr<LineSink> toStandardError();

    ~LineSink();
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;

    // Adds the line's end. Keeps errno, because it runs between a call and its evaluation.
    void writeLine(std::string_view line) noexcept;
    // False when a line could not be written in full at any time so far.
    bool flush() noexcept;

  private:
    LineSink(FILE* file, bool isOwned) : mFile(file), mIsOwned(isOwned) {}

    std::mutex mMutex;
    FILE* mFile;
    bool mIsOwned;
    bool mHasFailed = false;
};

}  // namespace desk
