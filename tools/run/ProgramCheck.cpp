/*
 * Programs into which nothing can be preloaded.
 */
#include <android-base/file.h>
#include <android-base/strings.h>
#include <elf.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "run/Program.h"

namespace desk {

namespace {

using android::base::unique_fd;

// The file that would be executed, else one that cannot be; empty when there is none. Searches as
// posix_spawnp does.
std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char* const path = std::getenv("PATH");
    std::string forbidden;
    for (const std::string& folder :
         android::base::Split(path != nullptr ? path : "/bin:/usr/bin", ":")) {
        std::string file = (folder.empty() ? "." : folder) + "/" + name;
        std::error_code ignored;
        if (access(file.c_str(), X_OK) == 0 && !std::filesystem::is_directory(file, ignored)) {
            return file;
        }
        if (std::filesystem::exists(file, ignored)) {
            forbidden = file;
        }
    }
    return forbidden;
}

// Why the loader ignores LD_PRELOAD for a set-user-id program, or one with capabilities; empty when
// it does not.
std::string gainOfRights(const std::string& file) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) {
        return "";
    }
    const bool isOtherUser = (status.st_mode & S_ISUID) != 0 && status.st_uid != geteuid();
    const bool isOtherGroup = (status.st_mode & S_ISGID) != 0 && status.st_gid != getegid();
    const bool hasCapabilities =
            geteuid() != 0 && getxattr(file.c_str(), "security.capability", nullptr, 0) > 0;
    constexpr const char* kWhy = "so that nothing can be preloaded into it; run velk-run as";
    return isOtherUser || isOtherGroup
                   ? fmt::format("runs with the rights of another user, {} that user", kWhy)
           : hasCapabilities ? fmt::format("has file capabilities, {} root", kWhy)
                             : "";
}

// Before an output is made or emptied for nothing.
void refuseMissing(const std::string& program, const std::string& file) {
    int error = 0;
    if (file.empty()) {
        error = ENOENT;
    } else if (access(file.c_str(), X_OK) != 0) {
        error = errno;
    } else if (std::filesystem::is_directory(file)) {
        error = EACCES;
    }
    if (error != 0) {
        throw ProgramError(error == ENOENT ? kExitNotFound : kExitNotExecutable,
                           fmt::format("{}: {}", program, std::strerror(error)));
    }
}

bool readAt(const unique_fd& file, void* place, size_t size, off64_t offset) {
    return android::base::ReadFullyAtOffset(file, place, size, offset);
}

bool readHead(const std::string& file, ElfW(Ehdr) & head, unique_fd& descriptor) {
    descriptor.reset(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    return descriptor.ok() && readAt(descriptor, head.e_ident, sizeof head.e_ident, 0) &&
           std::memcmp(head.e_ident, ELFMAG, SELFMAG) == 0 &&
           readAt(descriptor, &head, sizeof head, 0);
}

// Whether the loader has a part in running it.
bool hasLoader(const unique_fd& file, const ElfW(Ehdr) & head) {
    for (size_t i = 0; i < head.e_phnum; ++i) {
        ElfW(Phdr) part = {};
        const auto offset = static_cast<off64_t>(head.e_phoff + i * head.e_phentsize);
        if (readAt(file, &part, sizeof part, offset) && part.p_type == PT_INTERP) {
            return true;
        }
    }
    return false;
}

}  // namespace

void refuseUnseen(const std::string& program) {
    const std::string file = findProgram(program);
    refuseMissing(program, file);
    if (const std::string gain = gainOfRights(file); !gain.empty()) {
        throw ProgramError(kExitToolFailed, fmt::format("{}: {}", program, gain));
    }
    ElfW(Ehdr) head = {};
    ElfW(Ehdr) own = {};
    unique_fd descriptor;
    unique_fd ownDescriptor;
    if (!readHead(file, head, descriptor) || !readHead("/proc/self/exe", own, ownDescriptor)) {
        return;  // a script, run by its interpreter; any other file fails at the start
    }
    if (head.e_machine != own.e_machine || head.e_ident[EI_CLASS] != own.e_ident[EI_CLASS]) {
        throw ProgramError(kExitToolFailed,
                           fmt::format("{}: built for another kind of machine than velk-run, so "
                                       "that nothing can be preloaded into it",
                                       program));
    }
    if (!hasLoader(descriptor, head)) {
        throw ProgramError(kExitToolFailed,
                           fmt::format("{}: statically linked, so that nothing can be preloaded "
                                       "into it; link it dynamically",
                                       program));
    }
}

}  // namespace desk
