#include "run/LiveServer.h"

#include <android-base/file.h>
#include <android-base/strings.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <random>
#include <system_error>
#include <utility>

#include "common/StandardStreams.h"

namespace desk {

namespace {

using android::base::unique_fd;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

unique_fd listenAt(const std::string& name) {
    unique_fd descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::ranges::copy(name, address.sun_path + 1);  // a leading zero byte makes the name abstract
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    if (!descriptor.ok() ||
        bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        listen(descriptor.get(), SOMAXCONN) != 0) {
        fail("cannot create a socket for the program");
    }
    return descriptor;
}

std::string nameOfProcess(pid_t process) {
    std::string name;
    android::base::ReadFileToString(fmt::format("/proc/{}/comm", process), &name);
    return android::base::Trim(name);
}

// The process at the other end of the connection, 0 when it cannot be determined.
pid_t processBehind(const unique_fd& descriptor) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

// False when the program has closed the connection: the frame fits the buffer of a new socket.
// Throws std::system_error.
bool sendWhole(const unique_fd& descriptor, std::string_view frame) {
    while (!frame.empty()) {
        const ssize_t count = send(descriptor.get(), frame.data(), frame.size(), MSG_NOSIGNAL);
        if (count < 0 && (errno == EPIPE || errno == ECONNRESET)) {
            return false;
        }
        if (count < 0 && errno != EINTR) {
            fail("the settings cannot be sent to the program");
        }
        frame.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

}  // namespace

LiveServer::LiveServer(Setup setup, std::function<void(FrameKind, std::string_view)> onFrame)
    : mSetup(std::move(setup)),
      mOnFrame(std::move(onFrame)),
      mName(fmt::format("velk-run-{}-{:x}", getpid(), std::random_device()())),
      mListening(listenAt(mName)) {}

void LiveServer::addTo(std::vector<pollfd>& waiting) const {
    waiting.push_back({mListening.get(), POLLIN, 0});
    for (const Stream& stream : mStreams) {
        waiting.push_back({stream.descriptor.get(), POLLIN, 0});
    }
}

bool LiveServer::receive() {
    bool isAnything = acceptAll();
    std::erase_if(mStreams, [this, &isAnything](Stream& stream) {
        const ssize_t count = receiveFrom(stream);
        isAnything = isAnything || count > 0;
        return count == 0;
    });
    return isAnything;
}

bool LiveServer::acceptAll() {
    for (bool isAnything = false;; isAnything = true) {
        unique_fd descriptor(accept4(mListening.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (descriptor.ok()) {
            accept(std::move(descriptor));
        } else if (errno == EAGAIN) {
            return isAnything;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            fail("the program cannot connect");
        }
    }
}

void LiveServer::accept(unique_fd descriptor) {
    const pid_t process = processBehind(descriptor);
    if (mFollowed == 0) {
        mFollowed = process;
        mFollowedDescriptor.reset(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    }
    mSetup.isFollowed = process == mFollowed;
    FrameWriter frame(FrameKind::Setup);
    writeSetup(frame, mSetup);
    const bool isSent = sendWhole(descriptor, frame.finish());
    if (mSetup.isFollowed && isSent) {
        mStreams.push_back({std::move(descriptor), {}});
    } else if (!mSetup.isFollowed) {
        sayLeftAlone(process);
    }
}

void LiveServer::sayLeftAlone(pid_t process) {
    if (mOthers.empty()) {
        sayError("velk-run", fmt::format("process {} ({}) uses the library too and is left alone: "
                                         "process {} is followed, which was the first",
                                         process, nameOfProcess(process), mFollowed));
    }
    if (std::ranges::find(mOthers, process) == mOthers.end()) {
        mOthers.push_back(process);
    }
}

ssize_t LiveServer::receiveFrom(Stream& stream) {
    const size_t former = stream.bytes.size();
    stream.bytes.resize(former + kMostAtOnce);
    const ssize_t count =
            recv(stream.descriptor.get(), stream.bytes.data() + former, kMostAtOnce, MSG_DONTWAIT);
    if (count < 0 && errno == ECONNRESET) {
        return 0;  // it has closed the connection without reading all
    }
    if (count < 0 && errno != EAGAIN && errno != EINTR) {
        fail("the program's calls cannot be received");
    }
    stream.bytes.resize(former + static_cast<size_t>(std::max<ssize_t>(count, 0)));
    takeFrames(stream);
    return count;
}

void LiveServer::takeFrames(Stream& stream) {
    std::string_view rest = stream.bytes;
    FrameHead head;
    while (rest.size() >= sizeof head) {
        std::memcpy(&head, rest.data(), sizeof head);
        if (rest.size() - sizeof head < head.size) {
            break;
        }
        mOnFrame(head.kind, rest.substr(sizeof head, head.size));
        rest.remove_prefix(sizeof head + head.size);
    }
    stream.bytes.erase(0, stream.bytes.size() - rest.size());
}

}  // namespace desk
