/*
 * One line of a session file: from JSON to a checked call.
 */
#pragma once

#include <optional>
#include <string_view>

#include "session/SessionCall.h"
#include "tuning/JsonReader.h"

namespace desk {

// Keeps its memory from line to line.
class LineReader {
  public:
    // Fills in what the line says of the call; the name of its thread is valid until the next line
    // is read. Returns the first thing that is wrong with the line, if any.
    std::optional<JsonFault> read(std::string_view text, SessionCall& call,
                                  std::string_view& thread);

  private:
    JsonDocument mDocument;
};

}  // namespace desk
