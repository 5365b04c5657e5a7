/*
 * The program's end of the connection to velk-run.
 */
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace desk {

/*
 * The program may close descriptors that are not its own, and the kernel gives out the number
 * again: the socket is told by its identity, and connected anew. Not for several threads at a time.
 */
class Connection {
  public:
    explicit Connection(std::string socketName) : mSocketName(std::move(socketName)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Connects. Returns the content of the frame that velk-run sends then. Throws
    // std::system_error, as the others do.
    std::string open();
    // Sends a whole frame, and waits until velk-run has taken it in. A signal that the program
    // handles meanwhile does not matter.
    void send(std::string_view frame);
    // Leaves it, in a child process that has it from its parent, and after a failure.
    void close();

  private:
    bool isOwn() const;
    std::string receiveFrame() const;

    std::string mSocketName;
    int mDescriptor = -1;
    ino_t mInode = 0;
};

}  // namespace desk
