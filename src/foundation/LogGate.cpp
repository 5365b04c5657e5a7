#include "foundation/LogGate.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

namespace {
constexpr size_t kLogBufferSize = 1024;
}

void writeULogger(ULogger& logger, LogLevel level, const char* format, ...) {
    const std::unique_ptr<char[]> buffer(new char[kLogBufferSize]);
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(buffer.get(), kLogBufferSize, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    buffer[kLogBufferSize - 1] = '\0';
    // The logger gets the length that the formatter reported, so that it can tell when the text was
    // cut.
    logger.logMessage(kLogModule, VELK_LOG_TAG, static_cast<uint32_t>(level), buffer.get(), length);
}
