#include "common/Desk.h"

#include <android-base/parsebool.h>
#include <android-base/parseint.h>
#include <cutils/properties.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <variant>

#include "common/StandardStreams.h"
#include "driver/DriverModel.h"
#include "tuning/TuningLoader.h"
#include "tuning/TuningPlatform.h"

namespace desk {

namespace {

struct KnownProperty {
    std::string_view name;
    bool isBoolean;
};

constexpr std::array kProperties = {KnownProperty{"vendor.debug.velk.debuglog", true},
                                    KnownProperty{"vendor.debug.velk.forceoff", true},
                                    KnownProperty{"vendor.debug.velk.dumptasktable.enable", true},
                                    KnownProperty{"vendor.debug.velk.latencySpec", false},
                                    KnownProperty{"vendor.debug.velk.jitterSpec", false}};

}  // namespace

std::string doubtAboutProperty(const std::string& name, const std::string& value) {
    const auto* const known = std::ranges::find(kProperties, name, &KnownProperty::name);
    if (known == kProperties.end()) {
        std::string names;
        for (const KnownProperty& property : kProperties) {
            names += fmt::format("{}{}", names.empty() ? "" : ", ", property.name);
        }
        return fmt::format("{}: unknown to the library, expected one of {}", name, names);
    }
    using android::base::ParseBool;
    int32_t number = 0;
    if (known->isBoolean && ParseBool(value) == android::base::ParseBoolResult::kError) {
        return fmt::format(
                "{}: \"{}\" is no boolean, expected 1, y, yes, on, true, 0, n, no, off "
                "or false",
                name, value);
    }
    if (!known->isBoolean && !android::base::ParseInt(value, &number)) {
        return fmt::format("{}: \"{}\" is no whole number of 32 bits", name, value);
    }
    return "";
}

void setUpDesk(std::string_view program, const CommonOptions& options) {
    TuningResult tuning = loadTuning(options.tuning);
    if (const auto* error = std::get_if<TuningError>(&tuning)) {
        throw std::runtime_error(error->text());
    }
    installTuning(std::get<std::shared_ptr<const TuningData>>(std::move(tuning)));
    for (const auto& [name, value] : options.properties) {
        if (const std::string doubt = doubtAboutProperty(name, value); !doubt.empty()) {
            sayError(program, "warning: --property: " + doubt);
        }
        property_set(name.c_str(), value.c_str());
    }
    controlNode().injectFaults(options.injectedFaults);
}

std::vector<NamedFile> inputFilesOf(const CommonOptions& options) {
    std::vector<NamedFile> files;
    files.reserve(std::size(kTuningFiles));
    for (const char* const name : kTuningFiles) {
        files.push_back({"the tuning data", std::filesystem::path(options.tuning) / name});
    }
    return files;
}

std::vector<NamedFile> outputFilesOf(const CommonOptions& options) {
    std::vector<NamedFile> files = {{"standard output", "-", STDOUT_FILENO},
                                    {"standard error", "-", STDERR_FILENO}};
    for (const auto& [role, path] : {std::pair("--output", options.outputFile),
                                     {"--log", options.logFile},
                                     {"--ulog", options.ulogFile},
                                     {"--trace", options.traceFile},
                                     {"--report", options.reportFile}}) {
        if (path && path != "-") {
            files.push_back({role, *path});
        }
    }
    return files;
}

}  // namespace desk
