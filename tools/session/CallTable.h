/*
 * The calls that a session can hold: name, arguments, and how an operation is made of them.
 */
#pragma once

#include <string>
#include <string_view>

#include "session/Arguments.h"
#include "session/SessionCall.h"

namespace desk {

struct CallInfo {
    std::string_view name;
    ArgumentSet required = {};
    ArgumentSet oneOf = {};  // exactly one of these
    ArgumentSet optional = {};
    Operation (*make)(const Arguments& arguments) = nullptr;

    ArgumentSet known() const { return required | oneOf | optional; }
};

// Null when there is none of that name.
const CallInfo* findCall(std::string_view name);
// All names, for messages.
std::string listCalls();

}  // namespace desk
