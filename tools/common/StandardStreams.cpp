#include "common/StandardStreams.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <memory>
#include <system_error>

#include "text/PrintableText.h"

namespace desk {

void prepareStandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Where a parent ignores it, the kernel keeps no status of children that have ended.
    std::signal(SIGCHLD, SIG_DFL);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            // The lowest free number is this one. Open for the wrong direction, it fails at use.
            const int direction = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            static_cast<void>(::open("/dev/null", direction | O_CLOEXEC));
        }
    }
}

void sayError(std::string_view program, std::string_view message) noexcept {
    try {
        const std::shared_ptr<LineSink> sink = LineSink::toStandardError();
        size_t from = 0;
        for (size_t end = 0; end != std::string_view::npos; from = end + 1) {
            end = message.find('\n', from);
            const std::string_view line = message.substr(from, end - from);
            sink->writeLine(fmt::format("{}: {}", program, printableText(line)));
        }
    } catch (const std::exception&) {
        // Without memory for the line there is nothing to say it with.
    }
}

std::string describeFailure(const LineSink& sink) {
    return fmt::format("{}: {}", sink.name(), std::generic_category().message(sink.error()));
}

}  // namespace desk
