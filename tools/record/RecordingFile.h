/*
 * The file of a recording. What has been appended is in the file even if the process is killed
 * right after: the text is written into a shared mapping, which the kernel keeps.
 */
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace desk {

// Not thread-safe. Its destructor leaves the file as it is.
class RecordingFile {
  public:
    // Creates the file, or empties it. Throws std::runtime_error, also when another process records
    // into it, or when it is a standard stream of this one.
    explicit RecordingFile(std::string path);
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    const std::string& path() const { return mPath; }

    // Appends the whole text. When there is no room, appends nothing and throws std::system_error.
    void append(std::string_view text);

    // Cuts off the reserved space that is not used. More can be appended afterwards. Throws
    // std::system_error.
    void trim();

  private:
    void mapNext(size_t size);
    void unmap();
    // The program may close this descriptor, and its number may be reused. So the file is
    // recognised by device and inode, and opened again if it is another one.
    int descriptor();

    std::string mPath;
    int mDescriptor = -1;
    dev_t mDevice = 0;
    ino_t mInode = 0;
    uint64_t mWindowOffset = 0;
    size_t mWindowSize = 0;
    size_t mWindowUsed = 0;
    char* mWindow = nullptr;
};

}  // namespace desk
