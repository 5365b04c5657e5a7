/*
 * A progress bar on standard error.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "play/PlayedCall.h"

namespace desk {

// Draws itself from time to time over its own line. Whoever writes to the same terminal erases it
// first.
class Progress : public CallListener {
  public:
    // `size` is that of the session in bytes, if it is known.
    explicit Progress(std::optional<uint64_t> size);
    ~Progress() override;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void onCall(const PlayedCall& played) override;
    void erase();

  private:
    void draw(const PlayedCall& played);

    std::optional<uint64_t> mSize;
    uint64_t mCalls = 0;
    std::chrono::steady_clock::time_point mNextDrawing;
    bool mIsDrawn = false;
};

}  // namespace desk
