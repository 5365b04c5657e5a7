/*
 * The names that the threads of a program have in its recording. They are unique at any time; the
 * name of a thread that has ended is reused.
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

    // Takes the first free one of NAME, NAME~2, NAME~3, ... When that is a new name and `most` are
    // known already, reuses any free name instead. kNone when there is none.
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
