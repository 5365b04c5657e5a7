#include "sweep/SweptTool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

#include "support/Preload.h"

namespace desk {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "fault-mark";
constexpr std::chrono::milliseconds kPatience(60000);

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> environmentOf(const ToolRow& row, const std::optional<Fault>& fault) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    if (!row.environment.empty()) {
        variables.push_back(row.environment);
    }
    std::vector<std::string> libraries = row.libraries;
    if (fault) {
        libraries.insert(libraries.begin(), VELK_FAULT_LIBRARY);
        variables.push_back("VELK_FAULT=" + fault->kind + " " + std::to_string(fault->number) +
                            " " + std::to_string(fault->error));
        variables.push_back(std::string("VELK_FAULT_MARK=") + kMark);
        variables.push_back("VELK_FAULT_IN=" + row.faulted);
    }
    for (const std::string& variable : preloadVariables(libraries)) {
        variables.push_back(variable);
    }
    return variables;
}

// Whether any process lives that the tool has started. Those whose parent has ended are children of
// this process, see the constructor.
bool isAnyLeft() {
    using namespace std::chrono_literals;
    for (auto left = kPatience; left > 0ms; left -= 1ms) {
        pid_t ended = 0;
        while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) {
        }
        if (ended < 0) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// The end of the process, or its end by force when it does not come.
void await(pid_t process, SweepOutcome& outcome) {
    const auto watched = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    pollfd waiting = {watched, POLLIN, 0};
    if (poll(&waiting, 1, static_cast<int>(kPatience.count())) != 1) {
        outcome.isHung = true;
        kill(process, SIGKILL);
    }
    close(watched);
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

}  // namespace

SweptTool::SweptTool(ToolRow row) : mRow(std::move(row)) {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::string folder = testing::TempDir() + "sweep-XXXXXX";
    EXPECT_NE(mkdtemp(folder.data()), nullptr);
    mFolder = folder;
    restoreInputs();
}

void SweptTool::restoreInputs() const {
    for (const auto& [name, content] : mRow.inputs) {
        fs::create_directories((mFolder / name).parent_path());
        std::ofstream(mFolder / name) << content;
    }
}

SweptTool::~SweptTool() {
    fs::remove_all(mFolder);
}

SweepOutcome SweptTool::run(const std::optional<Fault>& fault) {
    return start(mRow.arguments, fault, {});
}

SweepOutcome SweptTool::run(const std::vector<std::string>& arguments,
                            const std::map<int, Stream>& streams) {
    return start(arguments, std::nullopt, streams);
}

SweepOutcome SweptTool::start(const std::vector<std::string>& arguments,
                              const std::optional<Fault>& fault,
                              const std::map<int, Stream>& streams) {
    fs::remove(mFolder / kMark);
    for (const auto& [option, output] : mRow.outputs) {
        fs::remove(mFolder / output);
    }
    for (const std::string& made : mRow.madeFiles) {
        fs::remove_all(mFolder / *fs::path(made).begin());
    }
    const std::string input = mRow.standardInput.empty() ? "/dev/null" : mRow.standardInput;
    std::map<int, Stream> all = streams;  // those that are given come before the usual ones
    all.insert({{STDIN_FILENO, {input, O_RDONLY}},
                {STDOUT_FILENO, {"out", O_WRONLY | O_CREAT | O_TRUNC}},
                {STDERR_FILENO, {"err", O_WRONLY | O_CREAT | O_TRUNC}}});
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, mFolder.c_str());
    for (const auto& [number, each] : all) {
        if (each.isClosed) {
            posix_spawn_file_actions_addclose(&actions, number);
        } else if (each.descriptor >= 0) {
            posix_spawn_file_actions_adddup2(&actions, each.descriptor, number);
        } else {
            posix_spawn_file_actions_addopen(&actions, number, each.path.c_str(), each.flags, 0600);
        }
    }
    std::vector<std::string> words = {mRow.program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentOf(mRow, fault);
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, mRow.program.c_str(), &actions, nullptr, pointers(words).data(),
                          pointers(variables).data()),
              0);
    posix_spawn_file_actions_destroy(&actions);

    SweepOutcome outcome;
    await(process, outcome);
    outcome.isHung = outcome.isHung || isAnyLeft();
    outcome.hasFaultHappened = fs::exists(mFolder / kMark);
    outcome.outputs["out"] = withoutNumbers(contentOf(mFolder / "out"));
    for (const auto& [option, output] : mRow.outputs) {
        outcome.outputs[output] = withoutNumbers(contentOf(mFolder / output));
    }
    for (const std::string& made : mRow.madeFiles) {
        outcome.outputs[made] = withoutNumbers(contentOf(mFolder / made));
    }
    outcome.err = contentOf(mFolder / "err");
    return outcome;
}

std::vector<std::string> SweptTool::changedInputs() const {
    std::vector<std::string> changed;
    for (const auto& [name, content] : mRow.inputs) {
        if (contentOf(mFolder / name) != content) {
            changed.push_back(name);
        }
    }
    return changed;
}

std::string contentOf(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::string withoutNumbers(const std::string& text) {
    std::string result;
    bool isInNumber = false;
    bool isHexadecimal = false;
    for (const char character : text) {
        const bool isDigit = character >= '0' && character <= '9';
        isHexadecimal = isInNumber && (isHexadecimal || character == 'x');
        isInNumber = isDigit || (isHexadecimal && std::isalnum(character) != 0);
        if (!isInNumber && (character != ' ' || !result.ends_with(' '))) {
            result += character;
        } else if (isInNumber && !result.ends_with('0')) {
            result += '0';
        }
    }
    return result;
}

}  // namespace desk
