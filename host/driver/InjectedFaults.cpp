#include "driver/InjectedFaults.h"

#include <fmt/format.h>

#include <bitset>
#include <charconv>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

namespace desk {

namespace {

using std::string_view;
using std::chrono::microseconds;

// Which commands have a delay already; the last element: whether there is a delay for all of them.
constexpr size_t kEveryCommand = VELK_COMMANDS.size();
using Delayed = std::bitset<VELK_COMMANDS.size() + 1>;

constexpr int kMaxErrno = 133;
constexpr microseconds kMaxDelay = std::chrono::seconds(10);

[[noreturn]] void fail(string_view item, string_view problem, string_view expected) {
    throw std::invalid_argument(
            fmt::format("driver item \"{}\": {}, expected {}", item, problem, expected));
}

string_view trim(string_view text) {
    constexpr string_view kBlanks = " \t";
    const size_t first = text.find_first_not_of(kBlanks);
    return first == string_view::npos
                   ? string_view()
                   : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Cuts `text` at the separator and returns what was before it; all of it when there is none.
string_view cutBefore(string_view& text, char separator) {
    const size_t place = text.find(separator);
    const string_view before = text.substr(0, place);
    text = place == string_view::npos ? string_view() : text.substr(place + 1);
    return trim(before);
}

std::optional<uint64_t> parseNumber(string_view text) {
    uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty() ? std::optional(number)
                                                                : std::nullopt;
}

int parseErrno(string_view item, string_view name) {
    // Two numbers have a second name.
    if (name == "ENOTSUP") {
        return ENOTSUP;
    }
    if (name == "EWOULDBLOCK") {
        return EWOULDBLOCK;
    }
    for (int error = 1; error <= kMaxErrno; ++error) {
        const char* candidate = strerrorname_np(error);
        if (candidate != nullptr && name == candidate) {
            return error;
        }
    }
    fail(item, fmt::format("\"{}\" is no errno", name), "a name such as EINVAL");
}

InjectedFaults::Refusal parseRefusal(string_view item, string_view value) {
    const bool isCounted = value.find('*') != string_view::npos;
    const string_view name = cutBefore(value, '*');
    InjectedFaults::Refusal refusal = {parseErrno(item, name), InjectedFaults::kAlways};
    if (isCounted) {
        refusal.times = parseNumber(trim(value)).value_or(0);
        if (refusal.times == 0) {
            fail(item, fmt::format("\"{}\" is no count", trim(value)),
                 "a whole number of 1 or more after the *");
        }
    }
    return refusal;
}

size_t parseCommand(string_view item, string_view text) {
    const std::optional<uint64_t> number = parseNumber(text);
    for (size_t i = 0; i < VELK_COMMANDS.size(); ++i) {
        if (number == VELK_COMMANDS[i].number || text == VELK_COMMANDS[i].name) {
            return i;
        }
    }
    std::string names;
    for (const VELKCommand& command : VELK_COMMANDS) {
        names += fmt::format(" {}", command.name);
    }
    fail(item, fmt::format("\"{}\" is no command", text),
         fmt::format("absent, open, slow, a number from {} to {} or one of{}",
                     VELK_COMMANDS.front().number, VELK_COMMANDS.back().number, names));
}

microseconds parseDuration(string_view item, string_view text) {
    const size_t unitPlace = std::min(text.find_first_not_of("0123456789"), text.size());
    const string_view unit = text.substr(unitPlace);
    const uint64_t scale = unit == "us" ? 1 : unit == "ms" ? 1'000 : unit == "s" ? 1'000'000 : 0;
    const std::optional<uint64_t> number = parseNumber(text.substr(0, unitPlace));
    const auto limit = static_cast<uint64_t>(kMaxDelay.count());
    if (scale == 0 || !number || *number > limit / scale) {
        fail(item, fmt::format("\"{}\" is no duration", text),
             "a whole number with us, ms or s, at most 10s");
    }
    return microseconds(*number * scale);
}

[[noreturn]] void failTwice(string_view item) {
    fail(item, "an earlier item says otherwise", "one item for each thing");
}

void setRefusal(string_view item, InjectedFaults::Refusal& place, InjectedFaults::Refusal refusal) {
    if (place.error != 0) {
        failTwice(item);
    }
    place = refusal;
}

// A delay of one command may follow that of all.
void parseSlow(string_view item, string_view value, InjectedFaults& result, Delayed& isDelayed) {
    if (value.find(':') == string_view::npos) {
        if (isDelayed.any()) {
            failTwice(item);
        }
        isDelayed.set(kEveryCommand);
        result.delays.fill(parseDuration(item, trim(value)));
        return;
    }
    const size_t command = parseCommand(item, cutBefore(value, ':'));
    if (isDelayed.test(command)) {
        failTwice(item);
    }
    isDelayed.set(command);
    result.delays[command] = parseDuration(item, trim(value));
}

void parseItem(string_view item, InjectedFaults& result, Delayed& isDelayed) {
    if (item == "absent") {
        setRefusal(item, result.open, {ENOENT, InjectedFaults::kAlways});
        return;
    }
    string_view value = item;
    const string_view subject = cutBefore(value, '=');
    if (subject.size() == item.size()) {
        fail(item, "there is no =", "absent, open=ERRNO, COMMAND=ERRNO or slow=DURATION");
    }
    if (subject == "open") {
        setRefusal(item, result.open, parseRefusal(item, value));
    } else if (subject == "slow") {
        parseSlow(item, value, result, isDelayed);
    } else {
        setRefusal(item, result.commands[parseCommand(item, subject)], parseRefusal(item, value));
    }
}

}  // namespace

InjectedFaults InjectedFaults::parse(string_view text) {
    InjectedFaults result;
    Delayed isDelayed;
    if (trim(text).empty()) {
        return result;
    }
    for (bool isLast = false; !isLast;) {
        isLast = text.find(',') == string_view::npos;
        const string_view item = cutBefore(text, ',');
        if (item.empty()) {
            fail(item, "it is empty", "an item between two commas");
        }
        parseItem(item, result, isDelayed);
    }
    return result;
}

}  // namespace desk
