#include "common/Logs.h"

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
    : mLog(openSink(options.logFile)), mUlog(openSink(options.ulogFile)) {
    uint32_t mode = 0;
    if (mLog != nullptr) {
        setAndroidLog(mLog);
        mode |= kAndroidLog;
    }
    if (mUlog != nullptr) {
        mLogger = std::make_unique<DeskULogger>(mUlog);
        mode |= kLogger;
    }
    setULogger(mLogger.get(), everyMessage(mode));
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
