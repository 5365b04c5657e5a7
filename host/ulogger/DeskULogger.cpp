#include "ulogger/DeskULogger.h"

#include <fmt/format.h>

#include <array>
#include <atomic>
#include <string_view>
#include <utility>

#include "log/LogLine.h"

uint32_t ULogger::sNormalDetailsMask = 0;
uint32_t ULogger::sDetailsLevel = 0;
uint32_t ULogger::sMode = 0;
ULogger* ULogger::sULogger = nullptr;

namespace desk {

namespace {

std::string_view levelLetter(uint32_t level) {
    constexpr std::string_view kLetters = "?EWI?D";
    return level < kLetters.size() ? kLetters.substr(level, 1) : kLetters.substr(0, 1);
}

template <typename T>
void storeSwitch(T& place, T value) {
    std::atomic_ref<T>(place).store(value);
}

}  // namespace

DeskULogger::DeskULogger(std::shared_ptr<LineSink> sink) : mSink(std::move(sink)) {}

void DeskULogger::flush() {
    mSink->flush();
}

void DeskULogger::logMessage(uint32_t moduleId, const char* tag, uint32_t level, const char* text,
                             int32_t /*length*/) {
    std::array<char, 32> origin = {};
    const auto end = fmt::format_to_n(origin.data(), origin.size(), "[{:07x}] {}", moduleId,
                                      levelLetter(level));
    writeLogLine(*mSink, {origin.data(), end.size}, tag, text);
}

void setULogger(ULogger* logger, const ULoggerSwitches& switches) {
    storeSwitch(ULogger::sULogger, logger);
    storeSwitch(ULogger::sDetailsLevel, switches.detailsLevel);
    storeSwitch(ULogger::sNormalDetailsMask, switches.normalDetailsMask);
    storeSwitch(ULogger::sMode, switches.mode);
}

}  // namespace desk
