/*
 * A folder that one test has to itself, and that is removed with all that is in it.
 */
#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string path = std::filesystem::temp_directory_path() / "velk-test-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), path);
        }
        mPath = path;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return mPath; }
    std::string file(const std::string& name) const { return mPath / name; }
    // As a word of a line for the shell.
    std::string word(const std::string& name) const { return "'" + file(name) + "'"; }

  private:
    std::filesystem::path mPath;
};
