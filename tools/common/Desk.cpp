#include "common/Desk.h"

#include <cutils/properties.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <utility>
#include <variant>

#include "driver/DriverModel.h"
#include "tuning/TuningLoader.h"
#include "tuning/TuningPlatform.h"

namespace desk {

void setUpDesk(const CommonOptions& options) {
    TuningResult tuning = loadTuning(options.tuning);
    if (const auto* error = std::get_if<TuningError>(&tuning)) {
        throw std::runtime_error(error->text());
    }
    installTuning(std::get<std::shared_ptr<const TuningData>>(std::move(tuning)));
    for (const auto& [name, value] : options.properties) {
        property_set(name.c_str(), value.c_str());
    }
    controlNode().injectFaults(options.injectedFaults);
}

std::vector<NamedFile> inputFilesOf(const CommonOptions& options) {
    std::vector<NamedFile> files;
    for (const char* const name : kTuningFiles) {
        files.push_back({"the tuning data", std::filesystem::path(options.tuning) / name});
    }
    return files;
}

std::vector<NamedFile> outputFilesOf(const CommonOptions& options) {
    std::vector<NamedFile> files = {{"standard output", "-", STDOUT_FILENO},
                                    {"standard error", "-", STDERR_FILENO}};
    for (const auto& [role, path] : {std::pair("--log", options.logFile),
                                     {"--ulog", options.ulogFile},
                                     {"--trace", options.traceFile}}) {
        if (path && path != "-") {
            files.push_back({role, *path});
        }
    }
    return files;
}

}  // namespace desk
