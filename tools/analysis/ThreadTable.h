/*
 * The threads of a session.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "play/PlayedCall.h"

namespace desk {

class ThreadTable {
  public:
    void take(const PlayedCall& played) {
        const uint32_t number = played.call->thread;
        if (number >= mNames.size()) {
            mNames.resize(number + 1);
        }
        if (mNames[number].empty()) {
            mNames[number] = played.thread;
        }
    }

    size_t size() const { return mNames.size(); }
    // Indexed by the number of the thread in the session.
    const std::string& nameOf(uint32_t number) const { return mNames.at(number); }

  private:
    std::vector<std::string> mNames;
};

}  // namespace desk
