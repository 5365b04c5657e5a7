#include "record/ThreadNames.h"

#include <algorithm>

namespace desk {

size_t ThreadNames::take(std::string_view name, size_t most) {
    std::string text(name);
    for (size_t number = 2;; ++number) {
        const auto known = std::find_if(mNames.begin(), mNames.end(),
                                        [&](const Name& other) { return other.text == text; });
        if (known == mNames.end()) {
            break;
        }
        if (!known->isTaken) {
            known->isTaken = true;
            return static_cast<size_t>(known - mNames.begin());
        }
        text = std::string(name) + '~' + std::to_string(number);
    }
    if (mNames.size() < most) {
        mNames.push_back({text, true});
        return mNames.size() - 1;
    }
    const auto free = std::find_if(mNames.begin(), mNames.end(),
                                   [](const Name& other) { return !other.isTaken; });
    if (free == mNames.end()) {
        return kNone;
    }
    free->isTaken = true;
    return static_cast<size_t>(free - mNames.begin());
}

void ThreadNames::giveBack(size_t place) {
    mNames[place].isTaken = false;
}

}  // namespace desk
