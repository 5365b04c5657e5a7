#include "run/InstalledFiles.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <stdexcept>

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

}  // namespace

std::string deskLibrary(const std::string& name) {
    for (const fs::path& folder : {folderOfDesk(), folderOfProgram()}) {
        fs::path file = folder / name;
        if (!fs::exists(file)) {
            continue;
        }
        if (file.string().find_first_of(" :") != std::string::npos) {
            throw std::runtime_error(
                    fmt::format("{}: a path with blanks or colons, which the loader cannot preload",
                                file.string()));
        }
        return file;
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
