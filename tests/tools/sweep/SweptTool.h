/*
 * A tool under test, run in a folder with its inputs, with standard streams and calls of
 * the C library that fail as a test wants it.
 */
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sweep/ToolRows.h"

namespace desk {

// A standard stream as the tool gets it: a path to open, a descriptor of the test, or closed.
struct Stream {
    std::string path;
    int flags = 0;
    int descriptor = -1;
    bool isClosed = false;
};

struct Fault {
    std::string kind;  // as the preloaded library knows it
    int number = 0;
    int error = 0;
};

struct SweepOutcome {
    int status = -1;      // of the exit; -1 when a signal ended it
    int signal = 0;       // that ended it
    bool isHung = false;  // had to be killed, or has left a process behind
    bool hasFaultHappened = false;
    std::map<std::string, std::string> outputs;  // by path; "out" is standard output
    std::string err;
};

class SweptTool {
  public:
    // Makes the folder with the inputs.
    explicit SweptTool(ToolRow row);
    ~SweptTool();
    SweptTool(const SweptTool&) = delete;
    SweptTool& operator=(const SweptTool&) = delete;

    SweepOutcome run(const std::optional<Fault>& fault = std::nullopt);
    // With other arguments, and with other standard streams than the usual files.
    SweepOutcome run(const std::vector<std::string>& arguments,
                     const std::map<int, Stream>& streams = {});

    // The inputs that are not as they were.
    std::vector<std::string> changedInputs() const;
    void restoreInputs() const;
    std::filesystem::path path(const std::string& name) const { return mFolder / name; }

  private:
    SweepOutcome start(const std::vector<std::string>& arguments, const std::optional<Fault>& fault,
                       const std::map<int, Stream>& streams);

    ToolRow mRow;
    std::filesystem::path mFolder;
};

std::string contentOf(const std::filesystem::path& path);

// The text with every number as 0 and one blank for many: times, thread ids and addresses differ
// from run to run.
std::string withoutNumbers(const std::string& text);

}  // namespace desk
