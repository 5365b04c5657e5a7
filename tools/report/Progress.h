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

// A bar that is redrawn in place from time to time; on a terminal that cannot do that, a line now
// and then. Before anything else is written to the same terminal, erase() has to be called.
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
