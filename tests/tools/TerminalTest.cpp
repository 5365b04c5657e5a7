/*
 * velk-replay on a terminal: rows and the progress bar keep to its width, and a terminal that knows
 * no control sequences gets none.
 */
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

#include "ReplayFixture.h"
#include "text/PrintableText.h"

namespace desk {
namespace {

// What the tool writes to a terminal of that width, for its standard output and error.
std::string runOnTerminal(const Arguments& arguments, unsigned short columns, const char* name) {
    const winsize size = {24, columns, 0, 0};
    int terminal = -1;
    std::vector<char*> words = {const_cast<char*>(VELK_REPLAY_PROGRAM)};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) {
        setenv("TERM", name, 1);
        execv(words[0], words.data());
        _exit(127);
    }
    std::string text;
    std::array<char, 4096> buffer;
    for (ssize_t count = 0; (count = read(terminal, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    close(terminal);
    waitpid(process, nullptr, 0);
    return text;
}

size_t widestLine(const std::string& text) {
    size_t widest = 0;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find_first_of("\r\n\x1b", start), text.size());
        widest = std::max(widest, displayWidth(text.substr(start, end - start)));
        start = end + (text.compare(end, 3, "\x1b[K") == 0 ? 3 : 1);
    }
    return widest;
}

class Terminal : public Replay {
  protected:
    Terminal() {
        // In recorded time it takes long enough for several drawings.
        std::string session = kInit;
        for (int i = 1; i <= 30; ++i) {
            session += R"({"at_us": )" + std::to_string(i * 20000) +
                       R"(, "thread": "preview Ã¤æ¼¢", "call": "notifyCamFps", "fps": 30})"
                       "\n";
        }
        write("session.jsonl", session + R"({"at_us": 700000, "thread": "s", "call": "uninit"})");
    }

    Arguments replay(const Arguments& more) const {
        Arguments all = {path("session.jsonl"), "--tuning", path("")};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
};

TEST_F(Terminal, RowsFitItsWidth) {
    for (const unsigned short columns : std::array<unsigned short, 4>{1, 30, 60, 100}) {
        const std::string text = runOnTerminal(replay({}), columns, "xterm");
        const std::string table = text.substr(0, text.find("\r\n\r\n"));
        EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 35);
        EXPECT_LE(widestLine(table), columns);
    }
}

TEST_F(Terminal, TheProgressBarKeepsToOneLine) {
    for (const unsigned short columns : std::array<unsigned short, 4>{1, 10, 40, 200}) {
        const std::string text = runOnTerminal(replay({"-q", "--speed", "2"}), columns, "xterm");
        const std::string bars = text.substr(0, text.find("Session "));
        EXPECT_NE(bars.find("\r\x1b[K"), std::string::npos) << columns;
        EXPECT_EQ(bars.find('\n'), std::string::npos);
        EXPECT_LT(widestLine(bars), columns);
    }
    const std::string plain = runOnTerminal(replay({"-q", "--speed", "0.5"}), 80, "dumb");
    EXPECT_EQ(plain.find('\x1b'), std::string::npos);
    EXPECT_NE(plain.find("%  "), std::string::npos) << plain;
}

}  // namespace
}  // namespace desk
