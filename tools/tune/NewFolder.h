/*
 * A folder that is created completely or not at all.
 */
#pragma once

#include <string>
#include <vector>

namespace desk {

struct NewFile {
    std::string name;
    std::string text;
};

// Throws std::runtime_error unless there is nothing at the path, or an empty folder.
void requireNewFolder(const std::string& path);

// Creates the folder with the files. Throws std::runtime_error or std::system_error, and then
// leaves nothing behind.
void writeNewFolder(const std::string& path, const std::vector<NewFile>& files);

}  // namespace desk
