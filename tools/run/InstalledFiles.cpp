#include "run/InstalledFiles.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "driver/DriverModel.h"

namespace desk {

namespace {

namespace fs = std::filesystem;

fs::path folderOfProgram() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

// This process uses the desk's main library itself.
fs::path folderOfDesk() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<const void*>(&controlNode), &info) == 0) {
        return {};
    }
    return fs::canonical(info.dli_fname).parent_path();
}

// The folder by a name that the loader can find in a list, which it splits at blanks and colons.
// LD_LIBRARY_PATH would not do: the program's own libraries must not be looked for there. The name
// is valid as long as this process lives, which ends after the program.
fs::path listableName(const fs::path& folder) {
    if (folder.string().find_first_of(" :") == std::string::npos) {
        return folder;
    }
    const int descriptor = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), folder);
    }
    return fmt::format("/proc/{}/fd/{}", getpid(), descriptor);
}

}  // namespace

std::string deskLibrary(const std::string& name) {
    for (const fs::path& folder : {folderOfDesk(), folderOfProgram()}) {
        if (fs::exists(folder / name)) {
            return listableName(folder) / name;
        }
    }
    throw std::runtime_error(fmt::format("{}: not there, expected it beside {}", name,
                                         (folderOfDesk() / "libvelkdesk.so").string()));
}

fs::path sampleTuning() {
    fs::path folder = (folderOfProgram() / VELK_SAMPLE_TUNING).lexically_normal();
    if (!fs::exists(folder)) {
        throw std::runtime_error(
                fmt::format("{}: the sample's tuning data is not there, expected --tuning DIR",
                            folder.string()));
    }
    return folder;
}

}  // namespace desk
