/*
 * How far the work has come, on standard error.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "log/LineSink.h"
#include "play/PlayedCall.h"

namespace desk {

// A bar that is drawn from time to time over its own line; on a terminal that cannot do that, now
// and then a line. Whoever writes to the same terminal erases the bar first.
class Progress : public CallListener {
  public:
    // `size` is that of the session in bytes, if it is known. `rows` may go to the same terminal.
    Progress(std::optional<uint64_t> size, std::shared_ptr<LineSink> rows);
    ~Progress() override;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void onCall(const PlayedCall& played) override;
    void erase();

  private:
    std::string describe(const PlayedCall& played) const;

    std::optional<uint64_t> mSize;
    std::shared_ptr<LineSink> mRows;
    std::shared_ptr<LineSink> mOutput;
    bool mIsBar;
    uint64_t mCalls = 0;
    std::chrono::steady_clock::time_point mNextDrawing;
    bool mIsDrawn = false;
};

}  // namespace desk
