/*
 * Reads a session block by block, in memory that does not depend on its length.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/InputFile.h"
#include "session/LineReader.h"
#include "session/SessionCall.h"

namespace desk {

// What a line that is no call does to its session.
enum class AfterFault : uint8_t {
    Stop,  // ends it
    GoOn   // is told and left out
};

struct SessionBlock {
    std::vector<SessionCall> calls;
    std::vector<std::string> faults;      // of the lines left out, in the form of `error`
    std::vector<std::string> newThreads;  // the names behind the next thread numbers
    bool isLast = false;
    // Why the session ends here: "FILE:LINE: FIELD: PROBLEM, expected EXPECTED". The calls of this
    // block are those before.
    std::optional<std::string> error;
    // Where a recording breaks off, because the program that was recorded ended abruptly:
    // "FILE:LINE". The calls are those before.
    std::optional<std::string> cutOff;
};

class SessionReader {
  public:
    static constexpr size_t kMaxLineLength = 1 << 20;
    static constexpr size_t kMaxThreads = 256;

    explicit SessionReader(InputFile& input, AfterFault afterFault = AfterFault::Stop);

    // Waits until there is at least one more line. Not to be called after the last block.
    SessionBlock next();

  private:
    static constexpr size_t kChunkSize = 1 << 15;

    // Reads one more chunk behind what is left of the one before. False at the end of the input.
    bool fill();
    void takeLine(std::string_view line, SessionBlock& block);
    // The text behind the last line's end, when there is no more to come.
    void takeRest(std::string_view rest, SessionBlock& block);
    void refuseLine(std::string_view field, std::string_view problem, std::string_view expected,
                    SessionBlock& block) const;
    uint32_t threadNumber(std::string_view name, SessionBlock& block);

    InputFile* mInput;
    AfterFault mAfterFault;
    LineReader mLineReader;
    std::vector<char> mBuffer;
    size_t mUsed = 0;  // bytes of the buffer that hold text not yet taken
    uint64_t mLine = 0;
    uint64_t mOffset = 0;  // of the end of the line that is being taken
    int64_t mLastUs = 0;
    std::map<std::string, uint32_t, std::less<>> mThreads;
};

}  // namespace desk
