/*
 * The names that the threads of a program have in its recording. At any time no two threads have
 * the same; the name of a thread that has ended is given out again.
 */
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace desk {

// Not thread-safe.
class ThreadNames {
  public:
    static constexpr size_t kNone = static_cast<size_t>(-1);

    // Takes the name, or NAME~2, NAME~3, ..., the first that is free. When `most` names are known
    // and this would be one more, takes a free one of another thread. kNone when there is none.
    size_t take(std::string_view name, size_t most);
    void giveBack(size_t place);

    const std::string& operator[](size_t place) const { return mNames[place].text; }

  private:
    struct Name {
        std::string text;
        bool isTaken = false;
    };

    std::vector<Name> mNames;
};

}  // namespace desk
