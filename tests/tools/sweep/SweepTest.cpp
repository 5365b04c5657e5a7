/*
 * Every tool under faults of its input and output: each call of the C library fails in turn, each
 * output is what it should not be, each signal comes at each stage. Whatever happens, no input
 * changes, the tool neither crashes nor hangs, and it says by its exit status whether its outputs
 * are complete. A new tool joins with a row.
 */
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <nlohmann/json.hpp>

#include "sweep/SweptTool.h"
#include "sweep/ToolRows.h"

namespace desk {

namespace {

using Words = std::vector<std::string>;

struct Kind {
    const char* name;
    int error;
    bool isTransient = false;  // to be tried again: nobody may notice
};

constexpr Kind kKinds[] = {{"open", EROFS},        {"read", EIO},
                           {"write", ENOSPC},      {"close", EIO},
                           {"mmap", ENOMEM},       {"fcntl", EMFILE},
                           {"poll", ENOMEM},       {"pipe2", EMFILE},
                           {"signalfd", EMFILE},   {"pthread_create", EAGAIN},
                           {"socket", EMFILE},     {"recv", ENOMEM},
                           {"send", ENOBUFS},      {"flock", ENOLCK},
                           {"ftruncate", EIO},     {"posix_fallocate", ENOSPC},
                           {"fork", EAGAIN},       {"recv", EINTR, true},
                           {"send", EINTR, true},  {"read", EINTR, true},
                           {"write", EINTR, true}, {"write", EAGAIN, true},
                           {"poll", EINTR, true}};

class Sweep : public testing::TestWithParam<ToolRow> {
  protected:
    // What holds of every run.
    void expectNoHarm(const SweepOutcome& outcome) const {
        EXPECT_FALSE(outcome.isHung);
        EXPECT_EQ(mTool.changedInputs(), Words());
    }

    // The outputs that are not as those of a run without faults.
    Words differences(const SweepOutcome& outcome) const {
        Words names;
        for (const auto& [name, content] : mWhole.outputs) {
            if (outcome.outputs.at(name) != content) {
                names.push_back(name);
            }
        }
        return names;
    }

    // Either the run ends as without faults, its outputs complete, or with a message.
    void expectHonesty(const SweepOutcome& outcome) const {
        EXPECT_EQ(outcome.signal, 0) << strsignal(outcome.signal);
        if (outcome.status != mWhole.status || !differences(outcome).empty()) {
            EXPECT_EQ(std::ranges::count(GetParam().troubles, outcome.status), 1) << outcome.status;
            // A driver that cannot be opened is a wrong one to a tool that judges drivers.
            EXPECT_TRUE(outcome.err.find(speaker() + ": ") != std::string::npos ||
                        outcome.outputs.at("out").find("errno 0, expected") != std::string::npos)
                    << outcome.err;
        }
    }

    // The table, on standard output as a rule.
    static const std::string& printed(const SweepOutcome& outcome) {
        const auto table = outcome.outputs.find("table");
        return table != outcome.outputs.end() ? table->second : outcome.outputs.at("out");
    }

    // A signal that is not handled ends the tool before it has begun, or when there is nothing left
    // to do. The program of velk-run ends by it, and velk-run as its program.
    bool isHonestEnd(const SweepOutcome& outcome) const {
        const std::string& out = printed(outcome);
        return out.empty() || differences(outcome).empty() ||
               (GetParam().isUnwatched && printed(mWhole).starts_with(out)) ||
               (out + outcome.err).find("ended by SIG") != std::string::npos;
    }

    // What went to the test itself is no part of a comparison.
    Words differencesBut(const SweepOutcome& outcome, const std::string& output) const {
        Words names = differences(outcome);
        std::erase(names, output);
        return names;
    }

    // The tool's arguments with another path for an output.
    static Words withOutput(const std::string& option, const std::string& path) {
        Words arguments = GetParam().arguments;
        for (size_t i = 0; i + 1 < arguments.size(); ++i) {
            if (arguments[i] == option) {
                arguments[i + 1] = path;
            }
        }
        return arguments;
    }

    static int after(int number) { return number < GetParam().oneByOne ? number + 1 : 2 * number; }

    static std::string speaker() {
        const ToolRow& row = GetParam();
        return row.speaker.empty() ? std::filesystem::path(row.program).filename().string()
                                   : row.speaker;
    }

    Sweep() { EXPECT_EQ(mWhole.status, GetParam().status) << mWhole.err; }

    SweptTool mTool{GetParam()};
    const SweepOutcome mWhole = mTool.run();  // without faults
};

TEST_P(Sweep, EachCallFailsInTurn) {
    for (const Kind& kind : kKinds) {
        bool hasHappened = true;
        for (int number = 1; hasHappened; number = after(number)) {
            SCOPED_TRACE(testing::Message() << kind.name << " " << number
                                            << " fails: " << strerrorname_np(kind.error));
            const SweepOutcome outcome = mTool.run(Fault{kind.name, number, kind.error});
            hasHappened = outcome.hasFaultHappened;
            expectNoHarm(outcome);
            expectHonesty(outcome);
            const bool isOfOneFile = (kind.error == ENOSPC || strcmp(kind.name, "close") == 0) &&
                                     GetParam().madeFiles.empty();
            EXPECT_LE(differences(outcome).size(), isOfOneFile ? 1U : 99U);
            if (kind.isTransient || !hasHappened) {
                EXPECT_EQ(outcome.status, mWhole.status);
            }
        }
    }
}

TEST_P(Sweep, EachSignalComesAtEachStage) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        bool hasHappened = true;
        for (int number = 1; hasHappened; number = after(number)) {
            SCOPED_TRACE(testing::Message() << strsignal(signal) << " ahead of call " << number);
            const SweepOutcome outcome = mTool.run(Fault{"any", number, -signal});
            hasHappened = outcome.hasFaultHappened;
            expectNoHarm(outcome);
            if (outcome.signal == 0) {
                EXPECT_TRUE(printed(outcome).find("nterrupted") != std::string::npos ||
                            differences(outcome).empty());
                if (outcome.status != mWhole.status) {
                    EXPECT_EQ(outcome.status, 128 + signal);
                }
                if (const auto trace = outcome.outputs.find("trace");
                    trace != outcome.outputs.end()) {
                    EXPECT_TRUE(nlohmann::json::accept(trace->second));
                }
            } else {
                EXPECT_EQ(outcome.signal, signal);
                EXPECT_TRUE(isHonestEnd(outcome)) << printed(outcome);
            }
        }
    }
}

// As under nohup, or in the background of a shell without job control.
TEST_P(Sweep, ASignalThatWasIgnoredAtTheStartStaysIgnored) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const auto inherited = std::signal(signal, SIG_IGN);
        bool hasHappened = true;
        for (int number = 1; hasHappened; number *= 2) {
            SCOPED_TRACE(testing::Message() << strsignal(signal) << " ahead of call " << number);
            const SweepOutcome outcome = mTool.run(Fault{"any", number, -signal});
            hasHappened = outcome.hasFaultHappened;
            expectNoHarm(outcome);
            EXPECT_EQ(outcome.signal, 0);
            EXPECT_EQ(outcome.status, mWhole.status);
            EXPECT_EQ(differences(outcome), Words());
        }
        std::signal(signal, inherited);
    }
}

TEST_P(Sweep, AnOutputThatIsAnInputIsRefused) {
    if (GetParam().inputs.empty()) {
        return;
    }
    const std::string first = GetParam().inputs.begin()->first;
    std::filesystem::create_symlink(first, mTool.path("link"));
    std::filesystem::create_hard_link(mTool.path(first), mTool.path("other name"));
    Words ofInputs = {"link", "other name", "./tuning/../" + first};
    for (const auto& [name, content] : GetParam().inputs) {
        ofInputs.push_back(name);
    }
    for (const auto& [option, output] : GetParam().outputs) {
        std::filesystem::create_symlink(output, mTool.path("to " + output));  // leads nowhere yet
    }
    for (const auto& [option, output] : GetParam().outputs) {
        Words shared = ofInputs;
        for (const auto& [other, otherOutput] : GetParam().outputs) {
            if (other != option) {
                shared.push_back(otherOutput);
                shared.push_back("to " + otherOutput);
            }
        }
        for (const std::string& path : shared) {
            SCOPED_TRACE(option + " " + path);
            const SweepOutcome outcome = mTool.run(withOutput(option, path));
            expectNoHarm(outcome);
            EXPECT_EQ(outcome.status, GetParam().failure);
            EXPECT_NE(outcome.err.find(speaker() + ": --"), std::string::npos) << outcome.err;
            EXPECT_NE(outcome.err.find("is the same file as"), std::string::npos) << outcome.err;
            for (const auto& [name, content] : outcome.outputs) {
                EXPECT_EQ(content, "") << name;
            }
        }
    }
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        const SweepOutcome outcome =
                mTool.run(GetParam().arguments, {{stream, {first, O_WRONLY | O_APPEND}}});
        EXPECT_EQ(outcome.status, GetParam().failure);
        // The message belongs to standard error.
        EXPECT_EQ(mTool.changedInputs(), stream == STDERR_FILENO ? Words{first} : Words());
        mTool.restoreInputs();
    }
}

struct BadStream {
    const char* name;
    Stream stream;
    int error;
};

TEST_P(Sweep, AStandardStreamIsFullClosedOrReadOnly) {
    for (const auto& [name, stream, error] :
         {BadStream{"full", {"/dev/full", O_WRONLY}, ENOSPC},
          BadStream{"closed", {"", 0, -1, true}, EBADF},
          BadStream{"read-only", {"/dev/zero", O_RDONLY}, EBADF}}) {
        SCOPED_TRACE(name);
        const SweepOutcome withoutOutput =
                mTool.run(GetParam().arguments, {{STDOUT_FILENO, stream}});
        expectNoHarm(withoutOutput);
        const bool isUsed = !mWhole.outputs.at("out").empty();
        const std::string reason = "standard output: " + std::string(strerror(error));
        EXPECT_EQ(withoutOutput.status, isUsed ? GetParam().failure : mWhole.status);
        EXPECT_EQ(withoutOutput.err.find(reason) != std::string::npos, isUsed) << withoutOutput.err;
        EXPECT_EQ(differencesBut(withoutOutput, "out"), Words());

        const SweepOutcome withoutError =
                mTool.run(GetParam().arguments, {{STDERR_FILENO, stream}});
        expectNoHarm(withoutError);
        const bool isAskedFor = std::ranges::count(GetParam().arguments, "--log") > 0 &&
                                !GetParam().outputs.contains("--log");
        EXPECT_EQ(withoutError.status, isAskedFor ? GetParam().failure : mWhole.status);
        EXPECT_EQ(differences(withoutError), Words());

        const SweepOutcome withoutBoth =
                mTool.run(GetParam().arguments, {{STDOUT_FILENO, stream}, {STDERR_FILENO, stream}});
        expectNoHarm(withoutBoth);
        EXPECT_EQ(withoutBoth.status, withoutOutput.status);
        EXPECT_EQ(differencesBut(withoutBoth, "out"), Words());
    }
}

TEST_P(Sweep, AFileIsFull) {
    for (const auto& [option, output] : GetParam().outputs) {
        if (option == "--record") {
            continue;  // refused, unless it is a regular file
        }
        SCOPED_TRACE(option);
        const SweepOutcome outcome = mTool.run(withOutput(option, "/dev/full"));
        expectNoHarm(outcome);
        EXPECT_EQ(outcome.status, GetParam().failure);
        EXPECT_EQ(outcome.err, speaker() + ": /dev/full: No space left on device\n");
        EXPECT_EQ(differencesBut(outcome, output), Words());
    }
}

TEST_P(Sweep, AReaderThatLeavesEndsThePrintingAlone) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    close(ends[0]);
    Stream abandoned;
    abandoned.descriptor = ends[1];
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        const SweepOutcome outcome = mTool.run(GetParam().arguments, {{stream, abandoned}});
        expectNoHarm(outcome);
        EXPECT_EQ(outcome.status, mWhole.status) << outcome.err;
        EXPECT_EQ(differencesBut(outcome, stream == STDOUT_FILENO ? "out" : ""), Words());
        const bool isTool = GetParam().environment.empty();
        EXPECT_TRUE(!isTool || mTool.run({"--help"}, {{stream, abandoned}}).status == 0);
    }
    for (const auto& [option, output] : GetParam().outputs) {
        if (option == "--record") {
            continue;
        }
        const SweepOutcome outcome =
                mTool.run(withOutput(option, "/dev/fd/" + std::to_string(STDOUT_FILENO)),
                          {{STDOUT_FILENO, abandoned}});
        expectNoHarm(outcome);
        EXPECT_EQ(outcome.status, GetParam().failure);
        EXPECT_NE(outcome.err.find(std::to_string(STDOUT_FILENO) + ": Broken pipe\n"),
                  std::string::npos)
                << outcome.err;
    }
    close(ends[1]);
}

INSTANTIATE_TEST_SUITE_P(Tools, Sweep, testing::ValuesIn(toolRows()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace desk
