#include "resource/ActiveValues.h"

#include <algorithm>
#include <iterator>

void ActiveValues::grow(size_t count) {
    mSorted.reserve(std::max(mSorted.size() + count, 2 * mSorted.capacity()));
}

void ActiveValues::insert(int64_t value) noexcept {
    // Room was made, so push_back does not grow the array: the compiler leaves that code out.
    if (mSorted.size() == mSorted.capacity()) {
        __builtin_unreachable();
    }
    const bool isLargest = mSorted.empty() || mSorted.back() <= value;
    mSorted.push_back(value);
    if (!isLargest) {
        moveLastIntoPlace();
    }
}

[[gnu::noinline]] void ActiveValues::moveLastIntoPlace() noexcept {
    const auto last = std::prev(mSorted.end());
    std::rotate(std::upper_bound(mSorted.begin(), last, *last), last, mSorted.end());
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
    const size_t before = mSorted.size();
    // The value is usually the largest, so that removing it only shortens the array.
    while (!mSorted.empty() && mSorted.back() == value) {
        mSorted.pop_back();
    }
    if (mSorted.size() == before) {
        const auto equals = std::equal_range(mSorted.begin(), mSorted.end(), value);
        mSorted.erase(equals.first, equals.second);
    }
    return before - mSorted.size();
}
