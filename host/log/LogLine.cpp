#include "log/LogLine.h"

#include <fmt/format.h>

#include <cerrno>
#include <iterator>

#include "clock/DeskClock.h"
#include "text/PrintableText.h"

namespace desk {

namespace {
thread_local uint32_t tThread = 0;  // 0: none was set
}

void setLogThread(uint32_t number) noexcept {
    tThread = number;
}

void writeLogLine(LineSink& sink, std::string_view origin, const char* tag,
                  const char* text) noexcept {
    const int callersErrno = errno;
    try {
        const int64_t micros = nowNs() / 1000;
        fmt::memory_buffer line;
        fmt::format_to(std::back_inserter(line), "{}.{:06} {} {} {}: {}", micros / 1'000'000,
                       micros % 1'000'000, tThread != 0 ? tThread : currentTid(), origin, tag,
                       printableText(text));
        sink.writeLine({line.data(), line.size()});
    } catch (...) {
        // Without memory for its line the message is lost.
    }
    errno = callersErrno;
}

}  // namespace desk
