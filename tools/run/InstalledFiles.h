/*
 * Files that are installed with velk-run, found beside it wherever that is.
 */
#pragma once

#include <filesystem>
#include <string>

namespace desk {

// The path of a library that belongs to the desk. Throws std::runtime_error when it is not there,
// or in a place that cannot be preloaded from.
std::string deskLibrary(const std::string& name);

// The folder of the sample's tuning data. Throws std::runtime_error when it is not there.
std::filesystem::path sampleTuning();

}  // namespace desk
