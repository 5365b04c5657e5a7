/*
 * Reads tuning data from the JSON files of a folder: platform.json, and where they exist
 * customer.json and settings.json.
 */
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tuning/TuningData.h"

namespace desk {

// One thing that is wrong with the data.
struct TuningFault {
    std::string file;
    std::string path;     // JSON pointer, "" for the whole file
    std::string problem;  // what was found
    std::string expected;

    // "FILE: PATH: problem, expected ..."
    std::string text() const;
};

// At least one, in the order of the files.
struct TuningError {
    std::vector<TuningFault> faults;

    // A line for each.
    std::string text() const;
};

// The names of the files that a folder may hold.
inline constexpr const char* kPlatformFile = "platform.json";
inline constexpr const char* kCustomerFile = "customer.json";
inline constexpr const char* kSettingsFile = "settings.json";
inline constexpr std::array kTuningFiles = {kPlatformFile, kCustomerFile, kSettingsFile};

using TuningResult = std::variant<std::shared_ptr<const TuningData>, TuningError>;

// How many faults of each file are told.
enum class FaultLimit : uint8_t { Readable, None };

TuningResult loadTuning(const std::filesystem::path& folder,
                        FaultLimit limit = FaultLimit::Readable);

// The texts of the three files.
struct TuningTexts {
    std::string platform;
    std::optional<std::string> customer;
    std::optional<std::string> settings;
};

TuningResult parseTuning(const TuningTexts& texts, FaultLimit limit = FaultLimit::Readable);

}  // namespace desk
