#include "report/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "common/Terminal.h"

namespace desk {

namespace {

using std::chrono::steady_clock;

constexpr auto kBarInterval = std::chrono::milliseconds(100);
constexpr auto kLineInterval = std::chrono::seconds(1);
constexpr double kUsPerSecond = 1e6;
constexpr const char* kEraseLine = "\r\x1b[K";

// The text, cut before the last column: after a full line the cursor would move to the next
// line.
std::string fitIntoLine(const std::string& text) {
    const size_t columns = terminalColumns(STDERR_FILENO).value_or(1);
    return text.substr(0, columns - 1);
}

}  // namespace

Progress::Progress(std::optional<uint64_t> size, std::shared_ptr<LineSink> rows)
    : mSize(size),
      mRows(std::move(rows)),
      mOutput(LineSink::toStandardError()),
      mIsBar(canTerminalEraseLines()),
      mNextDrawing(steady_clock::now() + (mIsBar ? kBarInterval : kLineInterval)) {}

Progress::~Progress() {
    erase();
}

void Progress::onCall(const PlayedCall& played) {
    ++mCalls;
    const auto now = steady_clock::now();
    if (now < mNextDrawing) {
        return;
    }
    mRows->flush();
    if (mIsBar) {
        mOutput->write(kEraseLine + fitIntoLine(describe(played)));
        mOutput->flush();
        mIsDrawn = true;
        mNextDrawing = now + kBarInterval;
    } else {
        mOutput->writeLine(describe(played));
        mNextDrawing = now + kLineInterval;
    }
}

std::string Progress::describe(const PlayedCall& played) const {
    std::string text;
    if (mSize && *mSize > 0) {
        constexpr uint64_t kWidth = 40;
        constexpr uint64_t kPercent = 100;
        const uint64_t done = std::min(played.call->endOffset, *mSize);
        text = fmt::format("{:>3}%  ", done * kPercent / *mSize);
        if (mIsBar) {
            text += fmt::format("[{:<{}}]  ", std::string(done * kWidth / *mSize, '#'), kWidth);
        }
    }
    return text + fmt::format("{:.3f} s  {} calls",
                              static_cast<double>(played.call->atUs) / kUsPerSecond, mCalls);
}

void Progress::erase() {
    if (std::exchange(mIsDrawn, false)) {
        mOutput->write(kEraseLine);
        mOutput->flush();
    }
}

}  // namespace desk
