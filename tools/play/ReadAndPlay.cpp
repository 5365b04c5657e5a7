#include "play/ReadAndPlay.h"

#include <exception>
#include <thread>
#include <utility>

#include "session/SessionReader.h"

namespace desk {

namespace {

// Reads the session into the queue on a thread of its own.
class ReaderThread {
  public:
    ReaderThread(InputFile& input, BlockQueue& queue) : mInput(input), mQueue(queue) {
        mThread = std::thread([this] { read(); });
    }

    ~ReaderThread() {
        mInput.stop();
        mQueue.close();
        mThread.join();
    }

    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

  private:
    void read() {
        SessionReader reader(mInput);
        for (bool isLast = false; !isLast;) {
            SessionBlock block = reader.next();
            isLast = block.isLast;
            if (!mQueue.push(std::move(block))) {
                return;
            }
        }
    }

    InputFile& mInput;
    BlockQueue& mQueue;
    std::thread mThread;
};

}  // namespace

PlayResult readAndPlay(InputFile& input, BlockQueue& queue, Player& player) {
    try {
        const ReaderThread reader(input, queue);
        return player.play();
    } catch (const std::exception& error) {
        // What was played until then is to be reported all the same.
        PlayResult result;
        result.error = error.what();
        return result;
    }
}

}  // namespace desk
