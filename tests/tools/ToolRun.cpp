#include "ToolRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <sstream>
#include <string_view>
#include <utility>

namespace desk {

namespace {

void closeOnce(int& descriptor) {
    if (descriptor >= 0) {
        close(std::exchange(descriptor, -1));
    }
}

}  // namespace

ToolRun::ToolRun(const std::vector<std::string>& arguments, const std::string& program)
    : mErrorPath(mFolder.file("stderr")) {
    // A tool that ends early must not end the test with it.
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> input = {};
    std::array<int, 2> output = {};
    EXPECT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(output.data(), O_CLOEXEC), 0);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, mErrorPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    EXPECT_EQ(posix_spawn(&mProcess, program.c_str(), &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    mOutput = output[0];
}

ToolRun::~ToolRun() {
    closeOnce(mInput);
    closeOnce(mOutput);
    if (mProcess > 0) {
        kill(mProcess, SIGKILL);
        waitpid(mProcess, nullptr, 0);
    }
}

void ToolRun::write(const std::string& input) const {
    for (size_t written = 0; written < input.size();) {
        const ssize_t count = ::write(mInput, input.data() + written, input.size() - written);
        if (count < 0) {
            return;  // the tool reads no more
        }
        written += static_cast<size_t>(count);
    }
}

bool ToolRun::readMore() {
    std::array<char, 4096> buffer;
    const ssize_t count = read(mOutput, buffer.data(), buffer.size());
    if (count <= 0) {
        return false;
    }
    mRead.append(buffer.data(), static_cast<size_t>(count));
    return true;
}

void ToolRun::readUntil(const std::string& text) {
    size_t place = std::string::npos;
    while ((place = mRead.find(text)) == std::string::npos ||
           mRead.find('\n', place) == std::string::npos) {
        if (!readMore()) {
            FAIL() << "the tool ended without printing " << text;
        }
    }
}

void ToolRun::sendSignal(int signal) const {
    EXPECT_EQ(kill(mProcess, signal), 0);
}

void ToolRun::closeInput() {
    closeOnce(mInput);
}

ToolOutcome ToolRun::waitForEnd() {
    while (readMore()) {
    }
    int status = 0;
    EXPECT_EQ(waitpid(std::exchange(mProcess, -1), &status, 0) > 0, true);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, mRead, readFile(mErrorPath)};
}

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

ToolOutcome runTool(const std::vector<std::string>& arguments, const std::string& input,
                    const std::string& program) {
    ToolRun run(arguments, program);
    run.write(input);
    run.closeInput();
    return run.waitForEnd();
}

std::string normalise(const std::string& text) {
    std::string result = text;
    constexpr std::string_view kMarker = "played in ";
    if (size_t place = result.find(kMarker); place != std::string::npos) {
        place += kMarker.size();
        result.replace(place, result.find('\n', place) - place, "0");
    }
    return result;
}

}  // namespace desk
