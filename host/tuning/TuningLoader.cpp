#include "tuning/TuningLoader.h"

#include <fmt/format.h>

#include <array>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tuning/JsonText.h"
#include "tuning/SourceJson.h"

namespace desk {

namespace {

constexpr const char* kPlatformFile = kTuningFiles[0];
constexpr const char* kCustomerFile = kTuningFiles[1];
constexpr const char* kSettingsFile = kTuningFiles[2];

// Parses one file's text and hands it to `read`; a fault gets the file's name.
template <typename Reader>
auto readText(const char* file, const std::string& text, Reader&& read) {
    try {
        return read(CheckedJson(parseJsonText(text)));
    } catch (const JsonFault& fault) {
        throw TuningError{file, fault.path, fault.problem, fault.expected};
    }
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string text;
    std::array<char, 4096> piece;
    do {
        stream.read(piece.data(), piece.size());
        text.append(piece.data(), static_cast<size_t>(stream.gcount()));
    } while (stream);
    if (!stream.is_open() || stream.bad()) {
        throw TuningError{path.filename(), "", "the file cannot be read", "a readable JSON file"};
    }
    return text;
}

std::optional<std::string> readFileIfThere(const std::filesystem::path& path) {
    return std::filesystem::exists(path) ? std::optional(readFile(path)) : std::nullopt;
}

}  // namespace

std::string TuningError::text() const {
    return path.empty() ? fmt::format("{}: {}, expected {}", file, problem, expected)
                        : fmt::format("{}: {}: {}, expected {}", file, path, problem, expected);
}

TuningResult parseTuning(const TuningTexts& texts) {
    try {
        auto data = std::make_shared<TuningData>();
        data->platform = readText(kPlatformFile, texts.platform, readPlatform);
        if (texts.customer) {
            data->customer = readText(kCustomerFile, *texts.customer, readCustomer);
        }
        if (texts.settings) {
            readText(kSettingsFile, *texts.settings,
                     [&data](const CheckedJson& json) { readSettings(json, *data); });
        }
        return data;
    } catch (TuningError& error) {
        return std::move(error);
    }
}

TuningResult loadTuning(const std::filesystem::path& folder) {
    try {
        TuningTexts texts;
        texts.platform = readFile(folder / kPlatformFile);
        texts.customer = readFileIfThere(folder / kCustomerFile);
        texts.settings = readFileIfThere(folder / kSettingsFile);
        TuningResult result = parseTuning(texts);
        if (auto* error = std::get_if<TuningError>(&result)) {
            error->file = folder / error->file;
        }
        return result;
    } catch (TuningError& error) {
        error.file = folder / error.file;
        return std::move(error);
    }
}

}  // namespace desk
