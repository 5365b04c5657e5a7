#include "session/LineParser.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "session/Arguments.h"
#include "session/CallTable.h"
#include "tuning/CheckedJson.h"
#include "tuning/ControlJson.h"
#include "tuning/JsonText.h"

namespace desk {

namespace {

using nlohmann::json;

std::vector<std::string_view> namesOf(const ArgumentSet& arguments) {
    std::vector<std::string_view> names;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i]) {
            names.push_back(argumentInfo(static_cast<Argument>(i)).name);
        }
    }
    return names;
}

ArgumentSet commonArguments() {
    Arguments common;
    common.markPresent(Argument::AtUs);
    common.markPresent(Argument::Thread);
    common.markPresent(Argument::Call);
    return common.present();
}

Argument firstOf(const ArgumentSet& arguments) {
    return static_cast<Argument>(arguments._Find_first());
}

LineFault missing(Argument argument) {
    const ArgumentInfo& info = argumentInfo(argument);
    return {std::string(info.name), "missing", describeExpected(info)};
}

LineFault unknownMember(std::string name, const CallInfo& call) {
    return {std::move(name), fmt::format("unknown member of {}", call.name),
            fmt::format("one of {}", fmt::join(namesOf(commonArguments() | call.known()), ", "))};
}

bool isControlCharacter(char c) {
    constexpr unsigned char kDelete = 0x7F;
    return static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) == kDelete;
}

// The call with the members that belong to it, or what is wrong with it.
std::variant<const CallInfo*, LineFault> checkCall(const Arguments& arguments) {
    static const ArgumentSet common = commonArguments();
    if (const ArgumentSet absent = common & ~arguments.present(); absent.any()) {
        return missing(firstOf(absent));
    }
    const CallInfo* call = findCall(arguments.text(Argument::Call));
    if (call == nullptr) {
        return LineFault{
                "call",
                fmt::format("unknown call {}", describeJson(json(arguments.text(Argument::Call)))),
                "one of " + listCalls()};
    }
    const ArgumentSet own = arguments.present() & ~common;
    if (const ArgumentSet unknown = own & ~call->known(); unknown.any()) {
        return unknownMember(std::string(argumentInfo(firstOf(unknown)).name), *call);
    }
    if (const ArgumentSet absent = call->required & ~own; absent.any()) {
        return missing(firstOf(absent));
    }
    const ArgumentSet chosen = own & call->oneOf;
    if (call->oneOf.any() && chosen.count() != 1) {
        const Argument first = firstOf(call->oneOf);
        return LineFault{std::string(argumentInfo(first).name),
                         chosen.none() ? "missing" : "not alone",
                         fmt::format("one of {}", fmt::join(namesOf(call->oneOf), " or "))};
    }
    return call;
}

}  // namespace

// Receives the parser's events of one line.
class LineParser::Handler : public nlohmann::json_sax<json> {
  public:
    std::variant<ParsedLine, LineFault> parse(std::string_view line) {
        mArguments.clear();
        mUnknownMember.clear();
        mCurrent = nullptr;
        mDepth = 0;
        if (!json::sax_parse(line.begin(), line.end(), this)) {
            return std::move(mFault);
        }
        const auto checked = checkCall(mArguments);
        if (const auto* fault = std::get_if<LineFault>(&checked)) {
            return *fault;
        }
        const CallInfo& call = *std::get<const CallInfo*>(checked);
        if (!mUnknownMember.empty()) {
            return unknownMember(mUnknownMember, call);
        }
        if (mArguments.has(Argument::Control) && !readControlOf(line)) {
            return std::move(mFault);
        }
        return ParsedLine{mArguments.integer<int64_t>(Argument::AtUs),
                          mArguments.text(Argument::Thread), call.make(mArguments)};
    }

    bool null() override { return isSkipped() || failAsFound("null"); }

    bool boolean(bool value) override {
        if (isSkipped()) {
            return true;
        }
        if (mCurrent == nullptr || mCurrent->type != ArgumentType::Boolean) {
            return failAsFound(value ? "true" : "false");
        }
        mArguments.set(mCurrent->argument, value ? 1 : 0);
        return true;
    }

    bool number_integer(number_integer_t value) override {
        return isSkipped() || takeInteger(value);
    }

    bool number_unsigned(number_unsigned_t value) override {
        return isSkipped() || takeInteger(value);
    }

    bool number_float(number_float_t value, const string_t& text) override {
        if (isSkipped()) {
            return true;
        }
        return mCurrent != nullptr && mCurrent->type == ArgumentType::Number
                       ? takeNumber(value, text)
                       : failAsFound(text);
    }

    bool string(string_t& value) override {
        if (isSkipped()) {
            return true;
        }
        if (mCurrent == nullptr) {
            return failAsFound(describeJson(json(value)));
        }
        switch (mCurrent->type) {
            case ArgumentType::Text:
                return takeText(value);
            case ArgumentType::Pointer:
                return takePointer(value);
            default:
                return failAsFound(describeJson(json(value)));
        }
    }

    bool binary(binary_t& /*value*/) override { return failAsFound("bytes"); }

    bool start_object(size_t /*elements*/) override {
        ++mDepth;
        if (mDepth == 2 && mCurrent != nullptr && mCurrent->type != ArgumentType::Control) {
            return failAsFound("an object");
        }
        return true;
    }

    bool end_object() override { return leave(); }

    bool start_array(size_t /*elements*/) override {
        ++mDepth;
        if (mDepth == 1) {
            return fail({"line", "found an array", "one JSON object"});
        }
        return mDepth > 2 || mCurrent == nullptr || failAsFound("an array");
    }

    bool end_array() override { return leave(); }

    bool key(string_t& name) override {
        if (mDepth > 1) {
            return true;
        }
        mCurrent = findArgument(name);
        if (mCurrent == nullptr) {
            mUnknownMember = mUnknownMember.empty() ? name : mUnknownMember;
            return true;
        }
        if (mArguments.has(mCurrent->argument)) {
            return fail({name, "duplicate member", "each member once"});
        }
        mArguments.markPresent(mCurrent->argument);
        return true;
    }

    bool parse_error(size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        // A number beyond the range of a double is well-formed, and the parser has no place for it.
        constexpr int kNumberOverflow = 406;
        const bool isTooLarge = error.id == kNumberOverflow;
        return fail({fmt::format("column {}", position),
                     isTooLarge ? "a number that is too large" : "no valid JSON",
                     "one JSON object"});
    }

  private:
    // Values of unknown members, and what lies within a control, which is read apart.
    bool isSkipped() const { return mDepth > 1 || (mDepth == 1 && mCurrent == nullptr); }

    bool leave() {
        --mDepth;
        return true;
    }

    bool fail(LineFault fault) {
        mFault = std::move(fault);
        return false;
    }

    bool failAsFound(const std::string& found) {
        if (mCurrent == nullptr) {
            return fail({"line", "found " + found, "one JSON object"});
        }
        return fail({std::string(mCurrent->name), "found " + found, describeExpected(*mCurrent)});
    }

    template <typename Whole>
    bool takeInteger(Whole value) {
        if (mCurrent != nullptr && mCurrent->type == ArgumentType::Number) {
            mArguments.setFps(static_cast<double>(value));
            return true;
        }
        if (mCurrent == nullptr || mCurrent->type != ArgumentType::Integer ||
            std::cmp_less(value, mCurrent->min) || std::cmp_greater(value, mCurrent->max)) {
            return failAsFound(std::to_string(value));
        }
        mArguments.set(mCurrent->argument, static_cast<uint64_t>(value));
        return true;
    }

    bool takeNumber(double value, const std::string& text) {
        if (std::abs(value) > double{std::numeric_limits<float>::max()}) {
            return failAsFound(text);
        }
        mArguments.setFps(value);
        return true;
    }

    bool takeText(std::string& value) {
        const auto length = static_cast<int64_t>(value.size());
        if (length < mCurrent->min || length > mCurrent->max ||
            std::any_of(value.begin(), value.end(), isControlCharacter)) {
            return failAsFound(describeJson(json(value)));
        }
        mArguments.set(mCurrent->argument, value);
        return true;
    }

    bool takePointer(const std::string& value) {
        uint64_t number = 0;
        const char* end = value.data() + value.size();
        const bool hasPrefix = value.starts_with("0x") || value.starts_with("0X");
        const auto [stop, error] =
                std::from_chars(value.data() + (hasPrefix ? 2 : 0), end, number, 16);
        if (!hasPrefix || error != std::errc() || stop != end) {
            return failAsFound(describeJson(json(value)));
        }
        mArguments.set(mCurrent->argument, number);
        return true;
    }

    bool readControlOf(std::string_view line) {
        try {
            const json document = parseJsonText(line);
            mArguments.setControl(
                    readControl(CheckedJson(document).at("control"), ControlRule::Recorded));
            return true;
        } catch (const JsonFault& fault) {
            return fail({fault.path.substr(1), fault.problem, fault.expected});
        }
    }

    Arguments mArguments;
    const ArgumentInfo* mCurrent = nullptr;
    std::string mUnknownMember;  // the first one of the line
    LineFault mFault;
    int mDepth = 0;
};

LineParser::LineParser() : mHandler(std::make_unique<Handler>()) {}
LineParser::~LineParser() = default;

std::variant<ParsedLine, LineFault> LineParser::parse(std::string_view line) {
    return mHandler->parse(line);
}

}  // namespace desk
