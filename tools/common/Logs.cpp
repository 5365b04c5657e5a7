#include "common/Logs.h"

#include <utility>

#include "log/DeskLog.h"

namespace desk {

namespace {

constexpr uint32_t kAndroidLog = 1;
constexpr uint32_t kLogger = 2;

std::shared_ptr<LineSink> openSink(const std::optional<std::string>& path) {
    if (!path) {
        return nullptr;
    }
    return path == "-" ? LineSink::toStandardError() : LineSink::toFile(*path);
}

}  // namespace

Logs::Logs(const CommonOptions& options)
    : Logs(openSink(options.logFile), openSink(options.ulogFile)) {}

Logs::Logs(std::shared_ptr<LineSink> log, std::shared_ptr<LineSink> ulog)
    : mLog(std::move(log)), mUlog(std::move(ulog)) {
    setAndroidLog(mLog);
    uint32_t mode = kAndroidLog;
    if (mUlog != nullptr) {
        mLogger = std::make_unique<DeskULogger>(mUlog);
        mode |= kLogger;
    }
    // Without a log only the warnings and errors are of use, in the rows of calls that failed.
    constexpr uint32_t kWarnings = 2;
    const bool hasLog = mLog != nullptr || mUlog != nullptr;
    setULogger(mLogger.get(), hasLog ? everyMessage(mode) : ULoggerSwitches{mode, kWarnings, 0});
}

Logs::~Logs() {
    setULogger(nullptr, {});
    setAndroidLog(nullptr);
}

std::vector<std::shared_ptr<LineSink>> Logs::sinks() const {
    std::vector<std::shared_ptr<LineSink>> sinks;
    for (const auto& sink : {mLog, mUlog}) {
        if (sink != nullptr) {
            sinks.push_back(sink);
        }
    }
    return sinks;
}

}  // namespace desk
