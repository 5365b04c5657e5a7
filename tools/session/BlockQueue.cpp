#include "session/BlockQueue.h"

#include <utility>

namespace desk {

bool BlockQueue::push(SessionBlock block) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return mIsClosed || mBlocks.size() < kCapacity; });
    if (mIsClosed) {
        return false;
    }
    mBlocks.push_back(std::move(block));
    mChanged.notify_all();
    return true;
}

bool BlockQueue::isEmpty() {
    const std::lock_guard lock(mMutex);
    return mBlocks.empty();
}

std::optional<SessionBlock> BlockQueue::pop() {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return mIsClosed || !mBlocks.empty(); });
    if (mIsClosed) {
        return std::nullopt;
    }
    SessionBlock block = std::move(mBlocks.front());
    mBlocks.pop_front();
    mChanged.notify_all();
    return block;
}

void BlockQueue::close() {
    const std::lock_guard lock(mMutex);
    mIsClosed = true;
    mChanged.notify_all();
}

}  // namespace desk
