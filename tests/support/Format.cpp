#include "support/Format.h"

#include <algorithm>
#include <optional>

namespace fake {
namespace {

constexpr std::string_view kErrorSuffix = " (%s){#%d:%s}";
constexpr std::string_view kSource = ":velk/src/VELKPerfCtrl}";

// "E: text" for the level that a sink was handed; '?' for one that does not exist there.
std::string levelLetter(const Event& event) {
    static constexpr std::string_view kAndroid = "???DIWE";
    static constexpr std::string_view kULogger = "?EWI?D";
    const std::string_view letters = event.isULogger ? kULogger : kAndroid;
    return {event.level < letters.size() ? letters[event.level] : '?', ':', ' '};
}

// The text of an error without what the log adds, and the operation that is added.
std::optional<std::pair<std::string, std::string>> undecorate(const Event& event) {
    const size_t parenthesis = event.text.rfind(" (");
    const size_t brace = event.text.rfind("){#");
    if (!event.format.ends_with(kErrorSuffix) || !event.text.ends_with(kSource) ||
        parenthesis == std::string::npos || brace == std::string::npos) {
        return std::nullopt;
    }
    const size_t line = brace + 3;
    const std::string number = event.text.substr(line, event.text.size() - kSource.size() - line);
    if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos ||
        number == "0") {
        return std::nullopt;
    }
    return std::pair(event.text.substr(0, parenthesis),
                     event.text.substr(parenthesis + 2, brace - parenthesis - 2));
}

std::string androidLine(const Event& event) {
    const std::string letter = levelLetter(event);
    const auto error = undecorate(event);
    if (letter[0] == 'E' && error) {
        return letter + error->first + " @" + error->second;
    }
    return letter + event.text;
}

// Whether both sinks got the same message.
bool isPair(const Event& first, const Event& second) {
    if (first.isULogger || !second.isULogger || second.kind != kLog ||
        first.thread != second.thread || levelLetter(first) != levelLetter(second)) {
        return false;
    }
    const auto error = undecorate(first);
    return (error ? error->first : first.text) == second.text &&
           error.has_value() == (first.level == 6);
}

bool dropAnnouncement(std::vector<std::string>& lines, uint32_t request) {
    const std::string announcement =
            "D: send ioctl command: " + std::to_string(static_cast<int32_t>(request));
    if (!lines.empty() && lines.back().ends_with(announcement)) {
        lines.pop_back();
        return true;
    }
    return false;
}

// One message; takes in the second sink's copy, which `i` then points at.
std::string messageLine(const std::vector<Event>& events, size_t& i) {
    const Event& event = events[i];
    if (i + 1 < events.size() && isPair(event, events[i + 1])) {
        ++i;
        return androidLine(event);
    }
    return event.isULogger ? "ulogger " + levelLetter(event) + event.text
                           : "android " + androidLine(event);
}

std::string traceLine(const Event& event) {
    constexpr std::string_view kPrefix = "begin VELK::";
    if (event.text.starts_with(kPrefix)) {
        return '{' + event.text.substr(kPrefix.size());
    }
    return event.text == "end" ? "}" : event.text;
}

// The command must have been announced in a process with the debug log, and in no other.
std::string commandLine(const Event& event, std::vector<std::string>& lines) {
    if (dropAnnouncement(lines, event.request) == isDebugLogOn()) {
        return event.text;
    }
    return event.text + (isDebugLogOn() ? " (not announced)" : " (announced)");
}

}  // namespace

std::string formatTranscript(const std::vector<Event>& events, uint32_t shown) {
    std::vector<std::string> lines;
    for (size_t i = 0; i < events.size(); ++i) {
        const Event& event = events[i];
        if ((event.kind & shown) == 0) {
            continue;
        }
        std::string line = event.text;
        if (event.kind == kTrace) {
            line = traceLine(event);
        } else if (event.kind == kLog) {
            line = messageLine(events, i);
        } else if (event.request != 0 && (shown & kLog) != 0) {
            line = commandLine(event, lines);
        }
        lines.push_back(event.thread > 1 ? "T" + std::to_string(event.thread) + ' ' + line : line);
    }
    std::string transcript;
    for (const std::string& line : lines) {
        transcript += line + '\n';
    }
    return transcript;
}

std::string expected(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const size_t newline = std::min(text.find('\n'), text.size());
        const size_t stroke = std::min(text.find(" | "), newline);
        std::string line(text.substr(0, stroke));
        text.remove_prefix(std::min(text.size(), stroke < newline ? stroke + 3 : stroke + 1));
        line.erase(0, line.find_first_not_of(' '));
        const size_t star = line.find("*: ");
        if (star <= std::string_view("android D").size()) {
            line = isDebugLogOn() ? line.erase(star, 1) : "";
        }
        result += line.empty() ? "" : line + '\n';
    }
    return result;
}

}  // namespace fake
