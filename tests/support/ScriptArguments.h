/*
 * The arguments of a call or a change in a scenario, which are written as a pattern says:
 *
 *   KEY [KEY]          a number; one that may be left out
 *   own/customer       one of these words
 *   NAME... a/b...     such words, one at least
 *   [head=N]           a number by its name, anywhere; also [uclamp=N,...], [critical=TASK:N,...]
 *   [shared]           a flag
 *
 * Everything here throws a Mistake when the words are others.
 */
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/Script.h"

namespace fake {

class Arguments {
  public:
    Arguments(const std::string& pattern, const Words& words);

    size_t count() const { return mWords.size(); }
    const std::string& word(size_t i) const { return mWords.at(i); }
    Words from(size_t i) const { return {mWords.begin() + static_cast<int>(i), mWords.end()}; }
    template <typename Value = int>
    Value at(size_t i) const {
        return number<Value>(mForms.at(i), mWords.at(i));
    }
    int at(size_t i, int missing) const { return i < count() ? at(i) : missing; }
    float real(size_t i) const;
    // Which of the pattern's words this is, counted from 0.
    size_t choice(size_t i) const;

    // Sets the value to the named argument, if that is given.
    void set(const std::string& name, bool& flag) const;
    void set(const std::string& name, std::multimap<int32_t, int32_t>& values) const;
    template <typename Value>
    void set(const std::string& name, Value& value) const {
        if (const auto given = mNamed.find(name); given != mNamed.end()) {
            value = number<Value>(name, given->second);
        }
    }
    template <typename Value>
    void set(const std::string& name, std::vector<Value>& values) const {
        for (const std::string& part : parts(name)) {
            values.push_back(number<Value>(name, part));
        }
    }
    template <typename Value, size_t kCount>
    void set(const std::string& name, std::array<Value, kCount>& values) const {
        std::vector<Value> given;
        set(name, given);
        if (given.size() > kCount) {
            refuse(name, mNamed.at(name), "at most " + std::to_string(kCount) + " numbers");
        }
        std::copy(given.begin(), given.end(), values.begin());
    }

  private:
    [[noreturn]] static void refuse(const std::string& name, const std::string& text,
                                    const std::string& expected);
    // The parts of a named argument between its commas.
    Words parts(const std::string& name) const;

    template <typename Value>
    static Value number(const std::string& name, const std::string& text) {
        const bool isHex = text.starts_with("0x");
        const char* const last = text.data() + text.size();
        Value value{};
        const auto [stop, error] =
                std::from_chars(text.data() + (isHex ? 2 : 0), last, value, isHex ? 16 : 10);
        if (error != std::errc() || stop != last) {
            using Limits = std::numeric_limits<Value>;
            refuse(name, text,
                   "a whole number from " + std::to_string(Limits::min()) + " to " +
                           std::to_string(Limits::max()));
        }
        return value;
    }

    Words mForms;  // of the arguments without a name
    Words mWords;
    std::map<std::string, std::string> mNamed;
};

}  // namespace fake
