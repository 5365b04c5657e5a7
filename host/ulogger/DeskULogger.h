/*
 * The camera stack's logger on the desk. The desk defines its static switches, all of them off and
 * no logger at first.
 */
#pragma once

#include <cstdint>
#include <memory>

#include "ULogger.h"
#include "log/LineSink.h"

namespace desk {

// Writes every message as a line "seconds.micros tid [module] L tag: text".
class DeskULogger : public ULogger {
  public:
    explicit DeskULogger(std::shared_ptr<LineSink> sink);

    void flush() override;
    void logMessage(uint32_t moduleId, const char* tag, uint32_t level, const char* text,
                    int32_t length) override;

  private:
    std::shared_ptr<LineSink> mSink;
};

struct ULoggerSwitches {
    uint32_t mode = 0;               // bit 0: Android log; bits 1 and 3: the logger
    uint32_t detailsLevel = 0;       // 2 warnings, 3 info, 5 debug
    uint32_t normalDetailsMask = 0;  // groups of modules whose debug messages pass
};

// The switches that let every message pass, to the places of `mode`.
constexpr ULoggerSwitches everyMessage(uint32_t mode) {
    return {mode, 5, 0xFFFFFFFF};
}

// Changes the switches and the logger, one by one and each atomically. The logger must outlive its
// use; null takes it away.
void setULogger(ULogger* logger, const ULoggerSwitches& switches);

}  // namespace desk
