/*
 * The log gate: decides per message whether it passes and which sinks get it.
 *
 * A message goes to the Android log, to the camera stack's ULogger, or to both, Android log first.
 * Its arguments are evaluated once per sink, each time with errno as it was before the message, so
 * that strerror(errno) gives both sinks the same text. A message that does not pass costs two or
 * three loads.
 *
 *   VELK_LOGE  error: always passes; the Android log also gets the operation, line and source
 *   VELK_LOGW  warning, VELK_LOGI  info, VELK_LOGD  debug
 *   ..._GATED  the same, but only while the debug log is on
 */
#pragma once

#include <android/log.h>

#include <cstdint>

#include "ULogger.h"
#include "foundation/ErrnoKeeper.h"
#include "foundation/RuntimeSwitches.h"
#include "foundation/Visibility.h"

#define VELK_LOG_TAG "VELKPerfCtrl"
#define VELK_LOG_SOURCE "velk/src/VELKPerfCtrl"

// The values are ULogger's; it has no level 4.
enum class LogLevel : uint32_t { Error = 1, Warning = 2, Info = 3, Debug = 5 };

inline constexpr uint32_t kLogModule = 0x1001015;
inline constexpr uint32_t kLogModuleGroups = 0x1001000;
inline constexpr uint32_t kLogModeAndroid = 0x1;
inline constexpr uint32_t kLogModeULogger = 0xA;

VELK_INTERNAL constexpr int androidPriority(LogLevel level) {
    switch (level) {
        case LogLevel::Error:
            return 6;
        case LogLevel::Warning:
            return 5;
        case LogLevel::Info:
            return 4;
        case LogLevel::Debug:
            break;
    }
    return 3;
}

// The camera stack may change its switches at any time, so each is read with one atomic load.
VELK_INTERNAL inline bool passesLogLevel(LogLevel level) {
    if (level == LogLevel::Error) {
        return true;
    }
    if (__atomic_load_n(&ULogger::sDetailsLevel, __ATOMIC_RELAXED) < static_cast<uint32_t>(level)) {
        return false;
    }
    return level != LogLevel::Debug ||
           (kLogModuleGroups & ~__atomic_load_n(&ULogger::sNormalDetailsMask, __ATOMIC_RELAXED)) ==
                   0;
}

VELK_INTERNAL inline bool isAndroidLogSelected() {
    return (__atomic_load_n(&ULogger::sMode, __ATOMIC_RELAXED) & kLogModeAndroid) != 0;
}

// The logger to write to now, null when it is not selected or there is none.
VELK_INTERNAL inline ULogger* selectedULogger() {
    if ((__atomic_load_n(&ULogger::sMode, __ATOMIC_RELAXED) & kLogModeULogger) == 0) {
        return nullptr;
    }
    return __atomic_load_n(&ULogger::sULogger, __ATOMIC_ACQUIRE);
}

// Formats one message into a buffer of its own and hands it to the logger.
VELK_INTERNAL void writeULogger(ULogger& logger, LogLevel level, const char* format, ...)
        __attribute__((format(printf, 3, 4), cold));

// The code that writes a message is a cold function of its own, so that only the test is part of
// the operation that logs.
#define VELK_LOG_TO_SINKS(level, androidWrite, ...)              \
    do {                                                         \
        if (passesLogLevel(level)) {                             \
            [&]() __attribute__((noinline, cold)) {              \
                const ErrnoKeeper errnoKeeper;                   \
                if (isAndroidLogSelected()) {                    \
                    androidWrite;                                \
                }                                                \
                if (ULogger* const logger = selectedULogger()) { \
                    errnoKeeper.restore();                       \
                    writeULogger(*logger, level, __VA_ARGS__);   \
                }                                                \
            }                                                    \
            ();                                                  \
        }                                                        \
    } while (false)

#define VELK_LOG_PLAIN(level, ...)                                                            \
    VELK_LOG_TO_SINKS(level,                                                                  \
                      __android_log_print(androidPriority(level), VELK_LOG_TAG, __VA_ARGS__), \
                      __VA_ARGS__)

#define VELK_LOGE(operation, format, ...)                                                    \
    VELK_LOG_TO_SINKS(LogLevel::Error,                                                       \
                      __android_log_print(androidPriority(LogLevel::Error), VELK_LOG_TAG,    \
                                          format " (%s){#%d:%s}" __VA_OPT__(, ) __VA_ARGS__, \
                                          operation, __LINE__, VELK_LOG_SOURCE),             \
                      format __VA_OPT__(, ) __VA_ARGS__)
#define VELK_LOGW(...) VELK_LOG_PLAIN(LogLevel::Warning, __VA_ARGS__)
#define VELK_LOGI(...) VELK_LOG_PLAIN(LogLevel::Info, __VA_ARGS__)
#define VELK_LOGD(...) VELK_LOG_PLAIN(LogLevel::Debug, __VA_ARGS__)

#define VELK_LOG_IF_DEBUG_LOG(log) \
    do {                           \
        if (isDebugLogEnabled()) { \
            log;                   \
        }                          \
    } while (false)

#define VELK_LOGW_GATED(...) VELK_LOG_IF_DEBUG_LOG(VELK_LOGW(__VA_ARGS__))
#define VELK_LOGI_GATED(...) VELK_LOG_IF_DEBUG_LOG(VELK_LOGI(__VA_ARGS__))
#define VELK_LOGD_GATED(...) VELK_LOG_IF_DEBUG_LOG(VELK_LOGD(__VA_ARGS__))
