/*
 * The camera stack's logger, as far as the library knows it. The camera stack defines the static
 * switches and may change them at any time from any thread.
 */
#pragma once

#include <cstdint>

class ULogger {
  public:
    virtual ~ULogger() = default;

    virtual void flush() = 0;  // not called by the library

    // Takes one message. `text` is zero-terminated; `length` is what the formatter reported and may
    // exceed what `text` holds.
    virtual void logMessage(uint32_t moduleId, const char* tag, uint32_t level, const char* text,
                            int32_t length) = 0;

    static uint32_t sNormalDetailsMask;  // groups of modules whose debug messages pass
    static uint32_t sDetailsLevel;       // most detailed level that passes
    static uint32_t sMode;               // bit 0: Android log; bits 1 and 3: this logger
    static ULogger* sULogger;            // the logger object, null while there is none
};
