/*
 * Standard input, output and error in the state in which a tool can rely on them, and the messages
 * that go to standard error.
 */
#pragma once

#include <string>
#include <string_view>

#include "log/LineSink.h"

namespace desk {

/*
 * To be called before anything is opened. A standard stream that the tool is started without is
 * opened such that every use of it fails: otherwise the first file to be opened would take its
 * place, and messages would be written into that file. A program that the tool executes is without
 * it again. Writing to a pipe without a reader and beyond the limit of a file's size become errors
 * instead of ending the process, and children can be waited for whatever the parent of the tool
 * does with SIGCHLD.
 */
void prepareStandardStreams();

// Writes "PROGRAM: LINE" for each line of the message, with other control characters escaped. Where
// standard error cannot take it, it is lost: the exit status tells as well.
void sayError(std::string_view program, std::string_view message) noexcept;

// "FILE: REASON" of a sink that has failed.
std::string describeFailure(const LineSink& sink);

}  // namespace desk
