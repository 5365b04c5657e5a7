/*
 * Hands blocks of a session from the reader to the player. Few are kept, so that a reader that is
 * faster does not fill the memory.
 */
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

#include "session/SessionReader.h"

namespace desk {

class BlockQueue {
  public:
    // Waits for room. False when the queue is closed, and then the block is gone.
    bool push(SessionBlock block);
    // Whether pop would wait.
    bool isEmpty();
    // Waits for a block. Empty when the queue is closed.
    std::optional<SessionBlock> pop();
    // Ends all waiting.
    void close();

  private:
    static constexpr size_t kCapacity = 4;

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<SessionBlock> mBlocks;
    bool mIsClosed = false;
};

}  // namespace desk
