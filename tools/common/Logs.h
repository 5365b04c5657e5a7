/*
 * The Android log and the camera stack's logger on their way to where the command line wants them.
 */
#pragma once

#include <memory>
#include <vector>

#include "common/CommonOptions.h"
#include "log/LineSink.h"
#include "ulogger/DeskULogger.h"

namespace desk {

// Before its construction and after its destruction the desk's defaults hold.
class Logs {
  public:
    // Opens the files. Throws std::system_error.
    explicit Logs(const CommonOptions& options);
    // A log without a sink is not written.
    Logs(std::shared_ptr<LineSink> log, std::shared_ptr<LineSink> ulog);
    ~Logs();
    Logs(const Logs&) = delete;
    Logs& operator=(const Logs&) = delete;

    // Of each log that is written.
    std::vector<std::shared_ptr<LineSink>> sinks() const;
    // Null where it is not written.
    LineSink* log() const { return mLog.get(); }
    LineSink* ulog() const { return mUlog.get(); }

  private:
    std::shared_ptr<LineSink> mLog;
    std::shared_ptr<LineSink> mUlog;
    std::unique_ptr<DeskULogger> mLogger;
};

}  // namespace desk
