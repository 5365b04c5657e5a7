#include "resource/ActiveValues.h"

#include <algorithm>
#include <iterator>

void ActiveValues::grow(size_t count) {
    mSorted.reserve(std::max(mSorted.size() + count, 2 * mSorted.capacity()));
}

void ActiveValues::insert(int64_t value) noexcept {
    if (mSorted.empty() || mSorted.back() <= value) {
        mSorted.push_back(value);
    } else {
        mSorted.insert(std::upper_bound(mSorted.begin(), mSorted.end(), value), value);
    }
}

void ActiveValues::insertCopies(int64_t value, size_t count) noexcept {
    const size_t room = mSorted.capacity() - mSorted.size();
    for (count = std::min(count, room); count > 0; --count) {
        insert(value);
    }
}

void ActiveValues::eraseOne(int64_t value) noexcept {
    const auto position = std::lower_bound(mSorted.begin(), mSorted.end(), value);
    if (position != mSorted.end() && *position == value) {
        mSorted.erase(position);
    }
}

size_t ActiveValues::eraseAll(int64_t value) noexcept {
    // The value is usually the largest one: then the array just gets shorter.
    const bool isLargest = !mSorted.empty() && mSorted.back() == value;
    const auto last =
            isLargest ? mSorted.end() : std::upper_bound(mSorted.begin(), mSorted.end(), value);
    auto first = last;
    while (first != mSorted.begin() && *std::prev(first) == value) {
        --first;
    }
    const auto count = static_cast<size_t>(last - first);
    mSorted.erase(first, last);
    return count;
}
