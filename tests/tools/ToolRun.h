/*
 * Runs a tool as its users do: velk-replay, unless another one is named.
 */
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace desk {

struct ToolOutcome {
    int status = -1;  // of the exit; -1 when a signal ended it
    std::string out;
    std::string err;
};

class ToolRun {
  public:
    // Starts the tool with these arguments; standard input is a pipe that stays open.
    explicit ToolRun(const std::vector<std::string>& arguments,
                     const std::string& program = VELK_REPLAY_PROGRAM);
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    void write(const std::string& input) const;
    // Reads standard output up to the end of the first line that holds `text`.
    void readUntil(const std::string& text);
    void sendSignal(int signal) const;
    void closeInput();
    ToolOutcome waitForEnd();

  private:
    bool readMore();

    const TemporaryFolder mFolder;
    const std::string mErrorPath;
    pid_t mProcess = -1;
    int mInput = -1;
    int mOutput = -1;
    std::string mRead;
};

// With `input` as standard input.
ToolOutcome runTool(const std::vector<std::string>& arguments, const std::string& input = "",
                    const std::string& program = VELK_REPLAY_PROGRAM);

std::string readFile(const std::string& path);

// The text with the time that the run took made 0; nothing else differs from run to run.
std::string normalise(const std::string& text);

}  // namespace desk
