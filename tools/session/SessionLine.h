/*
 * Writes the lines of a session. It uses nothing of the desk but host/text, so that the recorder
 * can link it.
 */
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "session/CallTable.h"

namespace desk {

/*
 * Appends the line of a call, with its newline: its name and every argument that has a value, of a
 * control the members that differ from their defaults.
 *
 * A session can hold nearly everything that a program can pass. Of the rest the closest is written:
 * control characters and bytes that are no UTF-8 as \xNN, texts cut to the length that they may
 * have, "?" for a thread without a name, a rate that is no number as 0 and an infinite one as the
 * largest float, which all have the same record.
 */
void appendSessionLine(std::string& text, int64_t atUs, std::string_view thread,
                       std::string_view call, const CallArguments& arguments);

// The call for people: "notifyTaskEnd(key="0x99", task=5)".
std::string describeCall(std::string_view call, const CallArguments& arguments);

}  // namespace desk
