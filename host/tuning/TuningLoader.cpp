#include "tuning/TuningLoader.h"

#include <android-base/file.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "tuning/SourceJson.h"

namespace desk {

namespace {

// Parses one file's text and hands it to `read`; a fault gets the file's name.
void readText(const char* file, const std::string& text,
              void (*read)(const JsonValue& json, TuningData& data), FaultLimit limit,
              TuningData& data, TuningError& error) {
    JsonFaults faults;
    JsonDocument document;
    if (document.parse(text, faults)) {
        const size_t maxFaults =
                limit == FaultLimit::Readable ? kMostFaults : std::numeric_limits<size_t>::max();
        read(JsonValue(document, faults, maxFaults), data);
    }
    for (JsonFault& fault : faults) {
        error.faults.push_back(
                {file, std::move(fault.path), std::move(fault.problem), std::move(fault.expected)});
    }
}

std::string readFile(const std::filesystem::path& path, TuningError& error) {
    std::string text;
    constexpr bool kFollowLinks = true;
    if (!android::base::ReadFileToString(path, &text, kFollowLinks)) {
        error.faults.push_back({path, "",
                                fmt::format("the file cannot be read ({})", std::strerror(errno)),
                                "a readable JSON file"});
    }
    return text;
}

// A link that leads nowhere is there.
std::optional<std::string> readFileIfThere(const std::filesystem::path& path, TuningError& error) {
    std::error_code ignored;  // reading it tells why it cannot be looked at
    const auto type = std::filesystem::symlink_status(path, ignored).type();
    return type != std::filesystem::file_type::not_found ? std::optional(readFile(path, error))
                                                         : std::nullopt;
}

// The faults of files that could be read; the empty text of another one has none of its own.
void addFaultsOfTexts(const std::filesystem::path& folder, const TuningError& ofTexts,
                      TuningError& error) {
    const std::vector<TuningFault> unreadable = error.faults;
    for (TuningFault fault : ofTexts.faults) {
        fault.file = folder / fault.file;
        if (std::ranges::find(unreadable, fault.file, &TuningFault::file) == unreadable.end()) {
            error.faults.push_back(std::move(fault));
        }
    }
}

}  // namespace

std::string TuningFault::text() const {
    return path.empty() ? fmt::format("{}: {}, expected {}", file, problem, expected)
                        : fmt::format("{}: {}: {}, expected {}", file, path, problem, expected);
}

std::string TuningError::text() const {
    std::vector<std::string> lines;
    lines.reserve(faults.size());
    for (const TuningFault& fault : faults) {
        lines.push_back(fault.text());
    }
    return fmt::format("{}", fmt::join(lines, "\n"));
}

TuningResult parseTuning(const TuningTexts& texts, FaultLimit limit) {
    auto data = std::make_shared<TuningData>();
    TuningError error;
    readText(kPlatformFile, texts.platform, readPlatform, limit, *data, error);
    if (texts.customer) {
        readText(kCustomerFile, *texts.customer, readCustomer, limit, *data, error);
    }
    if (texts.settings) {
        readText(kSettingsFile, *texts.settings, readSettings, limit, *data, error);
    }
    if (!error.faults.empty()) {
        return error;
    }
    return data;
}

TuningResult loadTuning(const std::filesystem::path& folder, FaultLimit limit) {
    TuningError error;
    TuningTexts texts;
    texts.platform = readFile(folder / kPlatformFile, error);
    texts.customer = readFileIfThere(folder / kCustomerFile, error);
    texts.settings = readFileIfThere(folder / kSettingsFile, error);
    TuningResult result = parseTuning(texts, limit);
    if (const auto* ofTexts = std::get_if<TuningError>(&result)) {
        addFaultsOfTexts(folder, *ofTexts, error);
    }
    return error.faults.empty() ? result : error;
}

}  // namespace desk
