/*
 * The control node as its users see it, and the state file that a driver may have beside it.
 */
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace nodecheck {

inline constexpr const char* kStatePath = "/proc/velk/state";

// An open file of the node. As the library's, it stays open in a program that a child starts.
class NodeFile {
  public:
    NodeFile();
    ~NodeFile() { close(); }
    NodeFile(const NodeFile&) = delete;
    NodeFile& operator=(const NodeFile&) = delete;

    // The errno of the open that failed, else 0.
    int error() const { return mError; }
    // 0, or the errno of the refusal.
    int send(uint32_t request, const void* record) const;
    void close();

  private:
    int mDescriptor;
    int mError = 0;
};

uint32_t ownTid();

bool hasStateFile();
// The lines about a process. Empty when it is not listed, or when there is no such file.
std::vector<std::string> stateLines(pid_t process);

// "taken" of 0, else the name of the errno.
std::string nameOfAnswer(int error);

}  // namespace nodecheck
