/*
 * The program's end of the connection to velk-run.
 */
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace desk {

/*
 * The program may close this descriptor, and its number may be reused. So the socket is recognised
 * by its identity, and connected again if it is another one. Not thread-safe.
 */
class Connection {
  public:
    explicit Connection(std::string socketName) : mSocketName(std::move(socketName)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Connects, and returns the content of the frame with which velk-run answers. Throws
    // std::system_error, as the others do.
    std::string open();
    // Sends a whole frame, and waits until velk-run has received it. Signals that the program
    // handles meanwhile do not interrupt it.
    void send(std::string_view frame);
    // Closes it: in a child process, which inherits it from its parent, and after a failure.
    void close();

  private:
    bool isOwn() const;
    std::string receiveFrame() const;

    std::string mSocketName;
    int mDescriptor = -1;
    ino_t mInode = 0;
};

}  // namespace desk
