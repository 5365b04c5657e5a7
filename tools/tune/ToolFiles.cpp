#include "tune/ToolFiles.h"

#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "common/OutputFiles.h"
#include "common/StandardStreams.h"
#include "log/LineSink.h"
#include "text/PrintableText.h"
#include "tuning/TuningLoader.h"

namespace desk {

void keepOutputsFromInputs(const std::vector<std::string>& folders,
                           const std::vector<std::string>& sessions) {
    std::vector<NamedFile> inputs;
    for (const std::string& folder : folders) {
        for (const char* const name : kTuningFiles) {
            inputs.push_back({"the tuning data", std::filesystem::path(folder) / name});
        }
    }
    for (const std::string& session : sessions) {
        inputs.push_back({"the session", session, session == "-" ? STDIN_FILENO : -1});
    }
    refuseSharedFiles(inputs, {{"standard output", "-", STDOUT_FILENO},
                               {"standard error", "-", STDERR_FILENO}});
}

void printResult(std::string_view text) {
    const auto output = LineSink::toStandardOutput();
    while (!text.empty()) {
        const size_t end = text.find('\n');
        output->writeLine(printableText(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    if (!output->close() && !output->isAbandoned()) {
        throw std::runtime_error(describeFailure(*output));
    }
}

}  // namespace desk
