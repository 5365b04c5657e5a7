#include "nodecheck/Node.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <utility>

#include "foundation/CommandRecords.h"

namespace nodecheck {

NodeFile::NodeFile() : mDescriptor(open(VELK_NODE_PATH, O_RDONLY)) {
    mError = mDescriptor < 0 ? errno : 0;
}

int NodeFile::send(uint32_t request, const void* record) const {
    return ioctl(mDescriptor, request, record) == 0 ? 0 : errno;
}

void NodeFile::close() {
    if (mDescriptor >= 0) {
        ::close(std::exchange(mDescriptor, -1));
    }
}

uint32_t ownTid() {
    return static_cast<uint32_t>(syscall(SYS_gettid));
}

bool hasStateFile() {
    return access(kStatePath, R_OK) == 0;
}

std::vector<std::string> stateLines(pid_t process) {
    const std::string head = fmt::format("process {} ", process);
    std::vector<std::string> lines;
    bool isWanted = false;
    std::ifstream state(kStatePath);
    for (std::string line; std::getline(state, line);) {
        if (line.starts_with("process ")) {
            isWanted = line.starts_with(head);
        }
        if (isWanted) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string nameOfAnswer(int error) {
    constexpr std::array<std::pair<int, const char*>, 13> kNames = {{{0, "taken"},
                                                                     {EINVAL, "EINVAL"},
                                                                     {ENOTTY, "ENOTTY"},
                                                                     {EFAULT, "EFAULT"},
                                                                     {EPERM, "EPERM"},
                                                                     {EACCES, "EACCES"},
                                                                     {EBADF, "EBADF"},
                                                                     {ENOENT, "ENOENT"},
                                                                     {ENOMEM, "ENOMEM"},
                                                                     {ENOSPC, "ENOSPC"},
                                                                     {EIO, "EIO"},
                                                                     {EINTR, "EINTR"},
                                                                     {ENOSYS, "ENOSYS"}}};
    for (const auto& [number, name] : kNames) {
        if (number == error) {
            return name;
        }
    }
    return fmt::format("errno {}", error);
}

}  // namespace nodecheck
