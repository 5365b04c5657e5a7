/*
 * One line of a session file: from JSON to a checked call.
 */
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "session/SessionCall.h"

namespace desk {

// What is wrong with a line. It reads "FIELD: PROBLEM, expected EXPECTED".
struct LineFault {
    std::string field;
    std::string problem;
    std::string expected;
};

struct ParsedLine {
    int64_t atUs = 0;
    std::string_view thread;  // valid until the next line is parsed
    Operation operation;
};

// Keeps its buffers from line to line.
class LineParser {
  public:
    LineParser();
    ~LineParser();
    LineParser(const LineParser&) = delete;
    LineParser& operator=(const LineParser&) = delete;

    std::variant<ParsedLine, LineFault> parse(std::string_view line);

  private:
    class Handler;
    std::unique_ptr<Handler> mHandler;
};

}  // namespace desk
