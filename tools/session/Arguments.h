/*
 * The members that a line of a session can have, with the type that each has in every call.
 */
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "VELKTypes.h"

namespace desk {

enum class Argument : uint8_t {
    AtUs,
    Thread,
    Call,
    DriverParam,
    Scenario,
    Customization,
    QueryMaxEfficientFreq,
    TuningParam1,
    TuningParam2,
    ApplyExtraDefaultControl,
    Key,
    Task,
    GroupHead,
    ExtraFlag0,
    ExtraFlag1,
    Mode,
    Category,
    Control,
    User,
    Anchor,
    Serial,
    Fps,
    Name,
    Value,
    Count_,
};

inline constexpr size_t kArgumentCount = static_cast<size_t>(Argument::Count_);

enum class ArgumentType : uint8_t { Integer, Boolean, Number, Text, Pointer, Control };

struct ArgumentInfo {
    Argument argument;
    std::string_view name;
    ArgumentType type;
    int64_t min = 0;  // of an integer; of a text, its length
    int64_t max = 0;
};

const ArgumentInfo& argumentInfo(Argument argument);
const ArgumentInfo* findArgument(std::string_view name);
// What the argument's value has to be, as it reads on after "expected".
std::string describeExpected(const ArgumentInfo& info);

using ArgumentSet = std::bitset<kArgumentCount>;

// The arguments of one line.
class Arguments {
  public:
    bool has(Argument argument) const { return mPresent[place(argument)]; }
    const ArgumentSet& present() const { return mPresent; }
    void markPresent(Argument argument) { mPresent.set(place(argument)); }
    void clear() { mPresent.reset(); }

    // Of what is present; zero or empty for what is not.
    template <typename T = int32_t>
    T integer(Argument argument) const {
        return has(argument) ? static_cast<T>(mIntegers[place(argument)]) : T{};
    }
    bool boolean(Argument argument) const { return integer<uint64_t>(argument) != 0; }
    template <typename T = int32_t>
    std::optional<T> optional(Argument argument) const {
        return has(argument) ? std::optional(integer<T>(argument)) : std::nullopt;
    }
    const std::string& text(Argument argument) const { return mTexts[place(argument)]; }
    double fps() const { return mFps; }
    const VELKSingleShotControl& control() const { return mControl; }

    void set(Argument argument, uint64_t bits) { mIntegers[place(argument)] = bits; }
    // Takes the text and leaves the former one, so that its memory is used again.
    void set(Argument argument, std::string& text) { mTexts[place(argument)].swap(text); }
    void setFps(double fps) { mFps = fps; }
    void setControl(VELKSingleShotControl control) { mControl = std::move(control); }

  private:
    static constexpr size_t place(Argument argument) { return static_cast<size_t>(argument); }

    ArgumentSet mPresent;
    std::array<uint64_t, kArgumentCount> mIntegers = {};  // two's complement of negative ones
    std::array<std::string, kArgumentCount> mTexts;
    double mFps = 0;
    VELKSingleShotControl mControl;
};

}  // namespace desk
