/*
 * Reads bytes as a session. A second reader of JSON judges each line that was taken for a call, the
 * call is written and read again, and a session that is not taken to its end has to say where and
 * why.
 */
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "session/SessionLine.h"
#include "session/SessionReader.h"

namespace {

using desk::SessionCall;

void require(bool holds, const char* what, const std::string& detail) {
    if (!holds) {
        std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
        std::abort();
    }
}

void checkCall(const SessionCall& call, const SessionCall& before, const std::string& line) {
    const auto json = nlohmann::json::parse(line, nullptr, false);
    require(json.is_object() && json["call"] == call.info->name && json["at_us"] == call.atUs,
            "not the call of its line", line);
    require(call.line > before.line && call.endOffset > before.endOffset &&
                    call.atUs >= before.atUs,
            "out of order", line);
}

// Writing the call that was read from the line gives the line again.
void checkLine(const SessionCall& call, std::string_view thread) {
    std::string line;
    appendSessionLine(line, call.atUs, thread, call.info->name, call.arguments);
    SessionCall readCall;
    std::string_view readThread;
    desk::LineReader reader;
    const auto fault = reader.read(line, readCall, readThread);
    require(!fault, fault ? fault->problem.c_str() : "", line);
    std::string again;
    appendSessionLine(again, readCall.atUs, readThread, readCall.info->name, readCall.arguments);
    require(again == line, "not the line that was read", again + line);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("session", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    const std::string text(reinterpret_cast<const char*>(data), size);
    require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
            "cannot write", path);

    desk::InputFile input(path);
    desk::SessionReader reader(input);
    SessionCall before;
    std::vector<std::string> threads;
    for (bool isLast = false; !isLast;) {
        const desk::SessionBlock block = reader.next();
        isLast = block.isLast;
        threads.insert(threads.end(), block.newThreads.begin(), block.newThreads.end());
        for (const SessionCall& call : block.calls) {
            const size_t end = std::min<size_t>(call.endOffset - 1, text.size());
            const size_t newline = text.rfind('\n', end == 0 ? 0 : end - 1);
            const size_t start = newline == std::string::npos ? 0 : newline + 1;
            checkCall(call, before, text.substr(start, end - start));
            require(call.thread < threads.size() &&
                            threads.size() <= desk::SessionReader::kMaxThreads,
                    "thread", path);
            checkLine(call, threads[call.thread]);
            before.line = call.line;
            before.endOffset = call.endOffset;
            before.atUs = call.atUs;
        }
        require(!block.error || (isLast && block.error->starts_with(path + ':') &&
                                 block.error->find(", expected ") != std::string::npos),
                "error", block.error.value_or(""));
    }
    return 0;
}
