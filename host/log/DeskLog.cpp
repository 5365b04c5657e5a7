#include "log/DeskLog.h"

#include <android/log.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <utility>

#include "log/LogLine.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

struct Target {
    std::mutex mutex;
    std::shared_ptr<LineSink> sink;
};

// Never destroyed: other threads may log while the process exits.
Target& target() {
    static Target& instance = *new Target;
    return instance;
}

std::string_view priorityLetter(int priority) {
    constexpr std::string_view kLetters = "??VDIWEF";
    const auto index = static_cast<size_t>(priority);
    return index < kLetters.size() ? kLetters.substr(index, 1) : kLetters.substr(0, 1);
}

// Of a fixed size, so that keeping a text cannot fail.
struct Problem {
    std::array<char, 256> text = {};
    size_t length = 0;
};
thread_local Problem tProblem;

void keepProblem(std::string_view message) noexcept {
    const std::string_view kept = cutToBytes(message, tProblem.text.size());
    std::ranges::copy(kept, tProblem.text.begin());
    tProblem.length = kept.size();
}

void writeToSink(int priority, const char* tag, const char* message) {
    if (priority >= ANDROID_LOG_WARN) {
        keepProblem(message);
    }
    std::shared_ptr<LineSink> sink;
    {
        const std::lock_guard lock(target().mutex);
        sink = target().sink;
    }
    if (sink != nullptr) {
        writeLogLine(*sink, priorityLetter(priority), tag != nullptr ? tag : "", message);
    }
}

// liblog hands the text to a logger within the message, and older ones beside it.
template <typename Message>
void logToSink(const Message* message) {
    writeToSink(message->priority, message->tag, message->message);
}
template <typename MessageData>
void logToSink(const MessageData* data, const char* text) {
    writeToSink(data->priority, data->tag, text);
}

// liblog of a host writes to standard error until it is told otherwise.
[[maybe_unused]] const bool kStartsSilent = [] {
    setAndroidLog(nullptr);
    return true;
}();

}  // namespace

void setAndroidLog(std::shared_ptr<LineSink> sink) {
    // liblog drops debug messages by default, and formats all others even if nobody wants them.
    const int priority = sink != nullptr ? ANDROID_LOG_VERBOSE : ANDROID_LOG_WARN;
    {
        const std::lock_guard lock(target().mutex);
        target().sink = std::move(sink);
    }
    __android_log_set_logger(logToSink);
    __android_log_set_minimum_priority(priority);
}

std::string_view keptProblem() noexcept {
    return {tProblem.text.data(), tProblem.length};
}

void clearProblem() noexcept {
    tProblem.length = 0;
}

}  // namespace desk
