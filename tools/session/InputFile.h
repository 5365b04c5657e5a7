/*
 * The bytes of a session file or of standard input. A read that waits can be cancelled.
 */
#pragma once

#include <android-base/unique_fd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Event.h"

namespace desk {

class InputFile {
  public:
    // "-" is standard input. Throws std::system_error.
    explicit InputFile(const std::string& path);

    const std::string& name() const { return mName; }
    // Of a regular file.
    std::optional<uint64_t> size() const { return mSize; }

    // Whether there was a byte to read, when it was opened or since. Not while read() runs.
    bool hasContent() const { return mHasContent; }

    // Waits for at least one byte. 0 at the end of the file and after a stop. Throws
    // std::system_error.
    size_t read(char* buffer, size_t size);
    // Ends a read that is under way and every later one. Any thread.
    void stop();

  private:
    std::string mName;
    android::base::unique_fd mOwned;  // not of standard input
    int mInput;
    Event mStop;
    std::optional<uint64_t> mSize;
    bool mHasContent = false;
};

}  // namespace desk
