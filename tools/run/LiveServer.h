/*
 * The socket that programs connect to. The first process that uses the library is followed.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <poll.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "live/Frame.h"
#include "live/Setup.h"

namespace desk {

class LiveServer {
  public:
    // Throws std::system_error.
    LiveServer(Setup setup, std::function<void(FrameKind, std::string_view)> onFrame);
    LiveServer(const LiveServer&) = delete;
    LiveServer& operator=(const LiveServer&) = delete;

    // For the environment of the program.
    const std::string& name() const { return mName; }
    // The process that is followed, 0 while there is none.
    pid_t followed() const { return mFollowed; }
    // Readable once that process has ended; -1 while there is none.
    int followedDescriptor() const { return mFollowedDescriptor.get(); }
    // Other processes that used the library; they are not followed.
    size_t others() const { return mOthers.size(); }

    // Adds the descriptors to poll.
    void addTo(std::vector<pollfd>& waiting) const;
    // Reads what has arrived, without waiting. False when nothing has. Throws
    // std::runtime_error.
    bool receive();

  private:
    static constexpr size_t kMostAtOnce = 1 << 16;

    struct Stream {
        android::base::unique_fd descriptor;
        std::string bytes;  // of an incomplete frame
    };

    // False when no connection is pending.
    bool acceptAll();
    void accept(android::base::unique_fd descriptor);
    void sayLeftAlone(pid_t process);
    // Returns the number of bytes, 0 at the end of the stream, -1 when there are none yet.
    ssize_t receiveFrom(Stream& stream);
    void takeFrames(Stream& stream);

    Setup mSetup;
    std::function<void(FrameKind, std::string_view)> mOnFrame;
    std::string mName;
    android::base::unique_fd mListening;
    std::vector<Stream> mStreams;
    pid_t mFollowed = 0;
    android::base::unique_fd mFollowedDescriptor;
    std::vector<pid_t> mOthers;
};

}  // namespace desk
