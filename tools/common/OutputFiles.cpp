#include "common/OutputFiles.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <stdexcept>

namespace desk {

namespace {

namespace fs = std::filesystem;

std::optional<struct stat> statusOf(const NamedFile& file) {
    struct stat status = {};
    const bool isThere = file.descriptor >= 0 ? ::fstat(file.descriptor, &status) == 0
                                              : ::stat(file.path.c_str(), &status) == 0;
    return isThere ? std::optional(status) : std::nullopt;
}

// Where writing to the path would make a file: links that lead to no file yet are followed.
fs::path placeToBe(fs::path path) {
    constexpr int kMaxLinks = 40;  // as the kernel
    std::error_code ignored;
    for (int i = 0; i < kMaxLinks && fs::is_symlink(fs::symlink_status(path, ignored)); ++i) {
        path = path.parent_path() / fs::read_symlink(path, ignored);
    }
    return fs::weakly_canonical(fs::absolute(path, ignored), ignored);
}

bool areOne(const NamedFile& one, const NamedFile& other) {
    const auto oneStatus = statusOf(one);
    const auto otherStatus = statusOf(other);
    if (!oneStatus && !otherStatus) {
        return one.descriptor < 0 && other.descriptor < 0 &&
               placeToBe(one.path) == placeToBe(other.path);
    }
    if (!oneStatus || !otherStatus || oneStatus->st_dev != otherStatus->st_dev ||
        oneStatus->st_ino != otherStatus->st_ino) {
        return false;
    }
    const bool isOneNamed = one.descriptor < 0 && other.descriptor < 0;
    return S_ISREG(oneStatus->st_mode) || (S_ISFIFO(oneStatus->st_mode) && isOneNamed);
}

[[noreturn]] void refuse(const NamedFile& output, const NamedFile& other) {
    const std::string name = output.descriptor < 0 ? output.path : "this";
    throw std::runtime_error(fmt::format("{}: {} is the same file as {}, expected another one",
                                         output.role, name, other.role));
}

}  // namespace

void refuseSharedFiles(const std::vector<NamedFile>& inputs,
                       const std::vector<NamedFile>& outputs) {
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        for (const NamedFile& input : inputs) {
            if (areOne(*output, input)) {
                refuse(*output, input);
            }
        }
        for (auto other = outputs.begin(); other != output; ++other) {
            const bool areStreams = output->descriptor >= 0 && other->descriptor >= 0;
            if (!areStreams && areOne(*output, *other)) {
                refuse(*output, *other);
            }
        }
    }
}

}  // namespace desk
