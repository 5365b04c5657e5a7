#include "log/LogLine.h"

#include <fmt/format.h>

#include <cerrno>
#include <iterator>

#include "clock/DeskClock.h"

namespace desk {

void writeLogLine(LineSink& sink, std::string_view origin, const char* tag,
                  const char* text) noexcept {
    const int callersErrno = errno;
    try {
        const int64_t micros = nowNs() / 1000;
        fmt::memory_buffer line;
        fmt::format_to(std::back_inserter(line), "{}.{:06} {} {} {}: {}", micros / 1'000'000,
                       micros % 1'000'000, currentTid(), origin, tag, text);
        sink.writeLine({line.data(), line.size()});
    } catch (...) {
        // Without memory for its line the message is lost.
    }
    errno = callersErrno;
}

}  // namespace desk
