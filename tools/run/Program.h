/*
 * The program that velk-run runs.
 */
#pragma once

#include <android-base/unique_fd.h>
#include <sys/types.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace desk {

// Exit statuses that are not the program's own, as env and timeout use them.
inline constexpr int kExitToolFailed = 125;
inline constexpr int kExitNotExecutable = 126;
inline constexpr int kExitNotFound = 127;

// The program cannot be run, or none of its calls could be seen.
class ProgramError : public std::runtime_error {
  public:
    ProgramError(int exitStatus, const std::string& text)
        : std::runtime_error(text), mExitStatus(exitStatus) {}
    int exitStatus() const { return mExitStatus; }

  private:
    int mExitStatus;
};

// Throws ProgramError when the loader would preload nothing into the program: it is statically
// linked, runs as another user, or is built for another machine; also when there is none to run.
void refuseUnseen(const std::string& program);

struct Start {
    std::vector<std::string> words;      // the program and its arguments
    std::vector<std::string> libraries;  // to be preloaded, after those of the environment
    std::vector<std::string> variables;  // NAME=VALUE, to be added to the environment
};

class Program {
  public:
    // Starts it with the signals and the standard streams that this process was given, except that
    // SIGCHLD is not ignored. Throws ProgramError.
    explicit Program(const Start& start);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t process() const { return mProcess; }
    // Readable once the program has ended.
    int descriptor() const { return mDescriptor.get(); }
    // Waits for the end of the program.
    void await();

    // "exited with 0", "ended by SIGSEGV". This and status() are valid once it has ended.
    std::string ending() const;
    // Exit status, or the negative number of the signal that ended it.
    int status() const;

  private:
    pid_t mProcess = -1;
    android::base::unique_fd mDescriptor;
    std::optional<int> mWaitStatus;
};

// Ends this process by the signal, without a second core dump.
[[noreturn]] void endBySignal(int signal);

// Stores which signals this process inherited as ignored. To be called before all else.
void rememberSignals();

}  // namespace desk
