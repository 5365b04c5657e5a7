/*
 * Files that are installed with velk-run. They are found relative to it.
 */
#pragma once

#include <filesystem>
#include <string>

namespace desk {

// The path of a library that belongs to the desk, for the loader to preload while this process
// lives. Throws std::runtime_error when it is missing.
std::string deskLibrary(const std::string& name);

// The folder of the sample's tuning data. Throws std::runtime_error when it is missing.
std::filesystem::path sampleTuning();

}  // namespace desk
