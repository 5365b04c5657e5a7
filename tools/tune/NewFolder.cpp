#include "tune/NewFolder.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "common/StandardStreams.h"
#include "log/LineSink.h"

namespace desk {

namespace {

namespace fs = std::filesystem;

// The path with links, "." and ".." resolved, without a slash at the end.
fs::path folderAt(const std::string& path) {
    const fs::path place = fs::weakly_canonical(fs::absolute(path));
    return place.has_filename() ? place : place.parent_path();
}

// A temporary folder beside the final one, renamed to it when it is complete.
class Preparation {
  public:
    explicit Preparation(const fs::path& place) {
        std::string name = place.string() + ".XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), place.string());
        }
        mPath = name;
    }
    ~Preparation() {
        std::error_code ignored;  // the original error is reported
        fs::remove_all(mPath, ignored);
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;

    const fs::path& path() const { return mPath; }

    void moveTo(const fs::path& place) const {
        const mode_t mask = umask(0);
        umask(mask);
        fs::permissions(mPath, static_cast<fs::perms>(0777 & ~mask));
        fs::rename(mPath, place);  // replaces an empty folder, and nothing else
    }

  private:
    fs::path mPath;
};

// Blocks the signals that ask this process to end during its lifetime.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            sigaddset(&held, signal);
        }
        pthread_sigmask(SIG_BLOCK, &held, &mFormer);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &mFormer, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t mFormer = {};
};

}  // namespace

void requireNewFolder(const std::string& path) {
    const fs::path place = folderAt(path);
    const bool isFree = !fs::exists(fs::symlink_status(place)) ||
                        (fs::is_directory(place) && fs::is_empty(place));
    if (!isFree) {
        throw std::runtime_error(fmt::format(
                "-o: {} is there and not empty, expected a new folder or an empty one", path));
    }
}

void writeNewFolder(const std::string& path, const std::vector<NewFile>& files) {
    const fs::path place = folderAt(path);
    const SignalsHeld held;
    const Preparation preparation(place);
    for (const NewFile& file : files) {
        const auto sink = LineSink::toFile(preparation.path() / file.name);
        sink->write(file.text);
        if (!sink->close()) {
            throw std::runtime_error(describeFailure(*sink));
        }
    }
    preparation.moveTo(place);
}

}  // namespace desk
