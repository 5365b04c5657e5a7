/*
 * The calls that a session can hold, a row for each: its name, its arguments, how it is made.
 */
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "session/CallArguments.h"

namespace desk {

// Places in kArguments.
class ArgumentList {
  public:
    constexpr ArgumentList() = default;
    template <typename... Names>
    static consteval ArgumentList of(Names... names) {
        ArgumentList list;
        ((list.mPlaces.at(list.mCount++) = placeOf(names)), ...);
        return list;
    }

    const uint8_t* begin() const { return mPlaces.data(); }
    const uint8_t* end() const { return mPlaces.data() + mCount; }

  private:
    // Not a constant, and so an error of the compiler, when there is no argument of that name.
    static consteval uint8_t placeOf(std::string_view name) {
        uint8_t place = 0;
        while (kArguments.at(place).name != name) {
            ++place;
        }
        return place;
    }

    std::array<uint8_t, 8> mPlaces = {};
    uint8_t mCount = 0;
};

struct CallInfo {
    std::string_view name;
    ArgumentList required = {};
    ArgumentList oneOf = {};  // exactly one of these
    ArgumentList optional = {};
    // Makes the call with arguments that have been checked. Returns what the operation returned: 0,
    // or -1 when it failed.
    int (*run)(const CallArguments& arguments) = nullptr;
};

// The call that brings the library up.
inline constexpr std::string_view kInitCall = "init";

std::span<const CallInfo> callTable();
// Null when there is none of that name.
const CallInfo* findCall(std::string_view name);
// All names, for messages.
std::string listCalls();

}  // namespace desk
