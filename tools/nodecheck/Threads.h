/*
 * Threads that a check starts, and that are joined even when not all of them can be started.
 */
#pragma once

#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace nodecheck {

class Threads {
  public:
    Threads() = default;
    ~Threads() { join(); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    // Throws std::system_error.
    template <typename Work>
    void start(Work&& work) {
        try {
            mThreads.emplace_back(std::forward<Work>(work));
        } catch (const std::system_error& error) {
            throw std::system_error(error.code(), "no thread");
        }
    }
    void join() {
        for (std::thread& thread : mThreads) {
            thread.join();
        }
        mThreads.clear();
    }

  private:
    std::vector<std::thread> mThreads;
};

}  // namespace nodecheck
