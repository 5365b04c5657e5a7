/*
 * Where text goes that somebody asked for: a file, standard output or standard error. A line is
 * written whole, also from many threads. A write that fails never stops its caller: what was
 * written until then stays a prefix of the text, the rest is dropped, and the first error is kept
 * for the end.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace desk {

class LineSink {
  public:
    // Empties the file or makes it. Throws std::system_error, whose text names the file.
    static std::shared_ptr<LineSink> toFile(const std::string& path);
    static std::shared_ptr<LineSink> toStandardOutput();
    // Keeps nothing back from one line to the next.
    static std::shared_ptr<LineSink> toStandardError();
    // Hands over each line, with its end, as it is written. `take` must not write to the sink.
    static std::shared_ptr<LineSink> toReceiver(std::function<void(std::string_view)> take);

    ~LineSink();
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;

    // Adds the line's end. Keeps errno, because it runs between a call and its evaluation.
    void writeLine(std::string_view line) noexcept;
    void write(std::string_view text) noexcept;
    // Hands on what is kept back. False when something could not be written at any time so far.
    bool flush() noexcept;
    // Flushes, and closes what it writes to; a file system may report a failed write only then.
    // Nothing is written any more. Standard error is left open for messages. False as for flush().
    bool close() noexcept;

    // The file as its user named it, "standard output" or "standard error".
    const std::string& name() const { return mName; }
    // The errno of the first failure, 0 when there was none.
    int error() const noexcept;
    // Whether the reader of a standard stream has gone; nobody is to be told of that.
    bool isAbandoned() const noexcept;

  private:
    enum class Keeping : uint8_t { Lines, Nothing };
    LineSink(int descriptor, std::string name, Keeping keeping);

    // With the lock held.
    void append(std::string_view text) noexcept;
    void writeOut(std::string_view text) noexcept;
    void flushBuffer() noexcept;

    mutable std::mutex mMutex;
    int mDescriptor;  // -1 once it is closed
    const bool mIsStandardStream;
    std::string mName;
    Keeping mKeeping;
    std::function<void(std::string_view)> mTake;  // instead of the descriptor, if there is one
    std::string mBuffer;                          // its memory is taken before it is needed
    int mError = 0;
};

}  // namespace desk
