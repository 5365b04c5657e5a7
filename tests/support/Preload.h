/*
 * Libraries for the loader to preload. It splits LD_PRELOAD at blanks, which the path of a checkout
 * may have, but LD_LIBRARY_PATH at colons alone.
 */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

inline std::string joined(const std::vector<std::string>& parts) {
    std::string result;
    for (const std::string& part : parts) {
        result += (result.empty() ? "" : ":") + part;
    }
    return result;
}

// NAME=VALUE variables of the environment that preload the files, in this order.
inline std::vector<std::string> preloadVariables(const std::vector<std::string>& libraries) {
    const char* const present = std::getenv("LD_LIBRARY_PATH");
    std::vector<std::string> names;
    std::vector<std::string> folders;
    for (const std::filesystem::path file : libraries) {
        names.push_back(file.filename());
        folders.push_back(file.parent_path());
    }
    if (present != nullptr) {
        folders.emplace_back(present);
    }
    return {"LD_PRELOAD=" + joined(names), "LD_LIBRARY_PATH=" + joined(folders)};
}
