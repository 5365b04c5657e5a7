#include "tune/ToolFiles.h"

#include <android-base/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/OutputFiles.h"
#include "common/StandardStreams.h"
#include "log/LineSink.h"
#include "text/PrintableText.h"

namespace desk {

void keepOutputsFromInputs(const std::vector<std::string>& folders,
                           const std::vector<std::string>& sessions) {
    std::vector<NamedFile> inputs;
    for (const std::string& folder : folders) {
        for (const char* const name : kTuningFiles) {
            inputs.push_back({"the tuning data", std::filesystem::path(folder) / name});
        }
    }
    for (const std::string& session : sessions) {
        inputs.push_back({"the session", session, session == "-" ? STDIN_FILENO : -1});
    }
    refuseSharedFiles(inputs, {{"standard output", "-", STDOUT_FILENO},
                               {"standard error", "-", STDERR_FILENO}});
}

std::shared_ptr<const TuningData> requireTuning(const std::string& folder) {
    TuningResult tuning = loadTuning(folder, FaultLimit::None);
    if (const auto* error = std::get_if<TuningError>(&tuning)) {
        throw std::runtime_error(error->text());
    }
    return std::get<std::shared_ptr<const TuningData>>(std::move(tuning));
}

TuningTexts requireTexts(const std::string& folder) {
    requireTuning(folder);
    const auto read = [&folder](const char* name) -> std::optional<std::string> {
        std::string text;
        constexpr bool kFollowLinks = true;
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        if (android::base::ReadFileToString(path, &text, kFollowLinks)) {
            return text;
        }
        if (errno != ENOENT) {
            throw std::system_error(errno, std::generic_category(), path.string());
        }
        return std::nullopt;
    };
    return {read(kPlatformFile).value_or(""), read(kCustomerFile), read(kSettingsFile)};
}

void requireFiles(const std::vector<std::string>& sessions) {
    if (std::find(sessions.begin(), sessions.end(), "-") != sessions.end()) {
        throw std::runtime_error(
                "SESSION: found -, and standard input can be read only once, expected a file");
    }
}

void printResult(std::string_view text) {
    const auto output = LineSink::toStandardOutput();
    while (!text.empty()) {
        const size_t end = text.find('\n');
        output->writeLine(printableText(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    if (!output->close() && !output->isAbandoned()) {
        throw std::runtime_error(describeFailure(*output));
    }
}

}  // namespace desk
