/*
 * Files that are installed with velk-run. They are found relative to it.
 */
#pragma once

#include <filesystem>
#include <string>

namespace desk {

// The path of a library that belongs to the desk. Throws std::runtime_error when it is missing,
// or when its path is one that the loader cannot preload.
std::string deskLibrary(const std::string& name);

// The folder of the sample's tuning data. Throws std::runtime_error when it is missing.
std::filesystem::path sampleTuning();

}  // namespace desk
