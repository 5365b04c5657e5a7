#include "report/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace desk {

namespace {

using std::chrono::steady_clock;

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr double kUsPerSecond = 1e6;

}  // namespace

Progress::Progress(std::optional<uint64_t> size)
    : mSize(size), mNextDrawing(steady_clock::now() + kInterval) {}

Progress::~Progress() {
    erase();
}

void Progress::onCall(const PlayedCall& played) {
    ++mCalls;
    const auto now = steady_clock::now();
    if (now >= mNextDrawing) {
        draw(played);
        mNextDrawing = now + kInterval;
    }
}

void Progress::draw(const PlayedCall& played) {
    constexpr uint64_t kWidth = 40;
    constexpr uint64_t kPercent = 100;
    std::fflush(stdout);
    fmt::print(stderr, "\r\x1b[K");
    if (mSize && *mSize > 0) {
        const uint64_t done = std::min(played.call->endOffset, *mSize);
        fmt::print(stderr, "[{:<{}}] {:>3}%  ", std::string(done * kWidth / *mSize, '#'), kWidth,
                   done * kPercent / *mSize);
    }
    fmt::print(stderr, "{:.3f} s  {} calls", static_cast<double>(played.call->atUs) / kUsPerSecond,
               mCalls);
    std::fflush(stderr);
    mIsDrawn = true;
}

void Progress::erase() {
    if (mIsDrawn) {
        fmt::print(stderr, "\r\x1b[K");
        std::fflush(stderr);
        mIsDrawn = false;
    }
}

}  // namespace desk
