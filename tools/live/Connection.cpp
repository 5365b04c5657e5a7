#include "live/Connection.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "live/Frame.h"

namespace desk {

namespace {

// Above the numbers that programs expect to be given, and below the usual limit.
constexpr int kFirstDescriptor = 1000;

[[noreturn]] void fail(int error) {
    throw std::system_error(error, std::generic_category(), "the connection to velk-run is lost");
}

// The descriptor keeps its number when the limit leaves no higher one.
int moveUp(int low) {
    const int high = fcntl(low, F_DUPFD_CLOEXEC, kFirstDescriptor);
    if (high < 0) {
        return low;
    }
    ::close(low);
    return high;
}

int connectTo(const std::string& name) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        fail(errno);
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    // The byte before the name stays zero, which makes the name abstract.
    const size_t length = std::min(name.size(), sizeof address.sun_path - 1);
    std::copy_n(name.begin(), length, address.sun_path + 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
    int result = -1;
    do {
        result = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        const int error = errno;
        ::close(descriptor);
        fail(error);
    }
    return moveUp(descriptor);
}

void receive(int descriptor, char* place, size_t size) {
    while (size > 0) {
        const ssize_t count = recv(descriptor, place, size, 0);
        if (count > 0) {
            place += count;
            size -= static_cast<size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            fail(count == 0 ? ECONNRESET : errno);
        }
    }
}

}  // namespace

std::string Connection::open() {
    mDescriptor = connectTo(mSocketName);
    struct stat status = {};
    fstat(mDescriptor, &status);
    mInode = status.st_ino;
    return receiveFrame();
}

void Connection::send(std::string_view frame) {
    if (!isOwn()) {
        open();
    }
    while (!frame.empty()) {
        const ssize_t count = ::send(mDescriptor, frame.data(), frame.size(), MSG_NOSIGNAL);
        if (count >= 0) {
            frame.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            fail(errno);
        }
    }
}

void Connection::close() {
    if (isOwn()) {
        ::close(mDescriptor);
    }
    mDescriptor = -1;
}

bool Connection::isOwn() const {
    struct stat status = {};
    return mDescriptor >= 0 && fstat(mDescriptor, &status) == 0 && S_ISSOCK(status.st_mode) &&
           status.st_ino == mInode;
}

std::string Connection::receiveFrame() const {
    FrameHead head;
    receive(mDescriptor, reinterpret_cast<char*>(&head), sizeof head);
    std::string content(head.size, '\0');
    receive(mDescriptor, content.data(), content.size());
    return content;
}

}  // namespace desk
